#include "internet/InternetBackEnd.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "core/ErrorCode.h"
#include "core/HexDigit.h"
#include "internet/InternetErrorText.h"
#include "internet/PartialMessage.h"
#include "internet/Pause.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

namespace {

// How long the last Server of a process may take to leave the servers, in milliseconds.
constexpr TickCount kShutdownPatience = 1000;

// About that much of a header comes over the wire: the display's threshold is in bytes.
constexpr std::uint64_t kBytesPerHeader = 1000;

constexpr std::int32_t kMostMessageMegabytes = 2048;

constexpr std::size_t kUniqueBytes = 16;

// How long another process may be at the files of what was fetched: it writes one.
constexpr int kLockTries = 10;
constexpr TickCount kLockPause = 25;

constexpr bool ServesPop(MailSystemId system) {
  return system == mail_system::kPop3 || system == mail_system::kInternet;
}
constexpr bool ServesSmtp(MailSystemId system) {
  return system == mail_system::kSmtp || system == mail_system::kInternet;
}

void RequirePop(const MailRequest& request) {
  if (!ServesPop(request.instance.mailSystem)) throw ServerError(error_code::kNotSupported);
}
void RequireSmtp(const MailRequest& request) {
  if (!ServesSmtp(request.instance.mailSystem)) throw ServerError(error_code::kNotSupported);
}

}  // namespace

// A message that LoadMessage fetches.
struct InternetBackEnd::Fetching {
  SharedState& shared;
  bool rawHeaders = false;
  bool tracked = false;  // in the index of what was fetched
  std::string mailbox = {};
  std::vector<std::string> identifiers = {};  // of all that it is made of

  // Where the identifier of the next part goes.
  std::string* NextIdentifier() { return tracked ? &identifiers.emplace_back() : nullptr; }
};

// Gives the client's table the headers that come. They take the place of the old ones when the
// server begins to list them, and stay, as far as they have come, however the loading ends.
class InternetBackEnd::HeaderUpdate {
 public:
  HeaderUpdate(SharedState& shared, const HeaderReading& reading, HeaderOptions options,
               std::unique_ptr<FetchedList> fetched, std::function<HeaderOrigin()> origin)
      : shared_(shared),
        reading_(reading),
        fetched_(std::move(fetched)),
        origin_(std::move(origin)),
        collector_(std::move(options), [this] { Begin(); }) {}
  ~HeaderUpdate() {
    if (!begun_) return;
    try {
      shared_.headers = TextTable(std::move(collector_.Table()), reading_);
    } catch (const std::exception&) {
      shared_.headers = {};
    }
  }
  HeaderUpdate(const HeaderUpdate&) = delete;
  HeaderUpdate& operator=(const HeaderUpdate&) = delete;

  HeaderCollector& Collector() noexcept { return collector_; }
  FetchedList* Fetched() noexcept { return fetched_.get(); }

 private:
  void Begin() {
    shared_.headers = {};  // its memory serves the new one
    shared_.headerOrigin = origin_();
    begun_ = true;
  }

  SharedState& shared_;
  const HeaderReading reading_;
  const std::unique_ptr<FetchedList> fetched_;
  std::function<HeaderOrigin()> origin_;
  HeaderCollector collector_;
  bool begun_ = false;
};

InternetBackEnd::InternetBackEnd(const InternetPorts& ports, InternetProduct product)
    : ports_(ports),
      product_(std::move(product)),
      login_(ports.loginPrompt, ports.configuration, ports.servers),
      runner_({ports.loop,
               ports.network,
               ports.security,
               {ports.files, ports.codePage, ports.clock, ports.log},
               ports.messageBox,
               ports.notifier,
               ports.progress}) {}

PopSettings InternetBackEnd::Pop(const MailRequest& request) {
  auto settings = PopSettingsOf(request, ports_.codePage);
  const auto section = ports_.servers.For(request.instance.postOffice);
  Apply(section, request.instance.access, ports_.codePage, settings);
  detailedErrors_ = section.detailedErrors.value_or(false);
  const auto& raw = request.instance.access.rawHeaders;
  rawHeaders_ = raw ? *raw != kFalse : section.rawHeaders.value_or(false);
  const auto& tnef = request.instance.access.expandTnef;
  expandTnef_ = tnef ? *tnef != kFalse : section.expandTnef.value_or(false);
  const auto& track = request.instance.access.trackUnread;
  trackUnread_ = track ? *track != kFalse : section.trackUnread.value_or(false);
  return settings;
}

SmtpSettings InternetBackEnd::Smtp(const MailRequest& request) {
  auto settings = SmtpSettingsOf(request, ports_.codePage);
  const auto section = ports_.servers.For(request.instance.smtpServer);
  Apply(section, request.instance.access, ports_.codePage, settings);
  detailedErrors_ = section.detailedErrors.value_or(false);
  form_ = FormOf(section, request.instance.access);
  return settings;
}

OutgoingMessage InternetBackEnd::Outgoing(const MailRequest& request) const {
  std::optional<TextEncoder> encoder;
  if (!form_.charset.empty()) {
    encoder.emplace(form_.charset, form_.replaces, ports_.characterEncoder);
    if (!encoder->IsAvailable()) {
      throw ServerError(error_code::kInvalidValue,
                        "This system has no table of the character set " + form_.charset + ".");
    }
  }
  auto message = MessageOf(request, product_, ports_.codePage, encoder);
  message.modern = form_.modern;
  if (!message.html.empty()) {
    message.htmlEncoder = encoder ? encoder : TextEncoder("utf-8", false, ports_.characterEncoder);
  }
  if (form_.modern) message.uniqueId = HexText(ports_.security.crypto.RandomBytes(kUniqueBytes));
  return message;
}

WorkOrder InternetBackEnd::NewOrder(const MailRequest& request, const char* member,
                                    std::int32_t operation, const char* context) {
  const auto& internet = request.shared.internet;
  WorkOrder order;
  order.member = member;
  order.operation = operation;
  order.context = context;
  order.system = request.instance.mailSystem;
  order.errorDisplay = request.instance.errorDisplay != kFalse;
  const auto& details = request.instance.access.detailedErrors;
  order.detailedErrors = details ? *details != kFalse : detailedErrors_;
  const bool sends = operation == asynch_operation::kSend;
  order.display.caption = sends ? "Sending Mail" : "Internet Mail";
  order.display.server = sends ? request.instance.smtpServer : request.instance.postOffice;
  order.display.parts = internet.progressBar;
  order.display.threshold = static_cast<std::uint64_t>(internet.progressBarThreshold);
  if (operation == asynch_operation::kLoadMessageHeaders) {
    order.display.threshold /= kBytesPerHeader;
    order.display.unit = TransferProgress::Unit::Messages;
  }
  order.display.abort = [this] { runner_.Abort(); };
  order.whenOver = [this, &shared = request.shared] { Report(shared); };
  return order;
}

void InternetBackEnd::Report(SharedState& shared) {
  const auto& report = Engine().Report();
  shared.connection = {report.TlsVersion(), report.Certificate(), Text(report.LastReply())};
}

// For both protocols together, one whose data is there is logged into; when neither's is, the user
// is asked for POP's.
MailResult InternetBackEnd::Login(MailRequest& request) {
  runner_.RequireIdle();
  const auto& instance = request.instance;
  const auto system = instance.mailSystem;
  const bool smtpData = login_.HasSmtp(request);
  const bool smtp = system == mail_system::kSmtp || (ServesSmtp(system) && smtpData);
  const bool pop = system == mail_system::kPop3 ||
                   (ServesPop(system) && (!instance.postOffice.empty() || !smtp));
  if (pop) login_.PreparePop(request);
  if (smtp) login_.PrepareSmtp(request);
  EngineRunner::Call call(runner_);
  Logins logins;
  if (pop) logins.push_back(Received(Engine().LoginPOP(Pop(request)), instance.postOffice));
  if (smtp) logins.push_back(Engine().LoginSMTP(Smtp(request)));
  return runner_.Perform(call, NewOrder(request, "Login", asynch_operation::kLogin, nullptr),
                         LoginAll(std::move(logins)));
}

Task<SessionResult> InternetBackEnd::LoginAll(Logins logins) {
  SessionResult result;
  for (auto& login : logins) {
    result = co_await login;
    if (result.number != internet_error::kSuccess) break;
  }
  co_return result;
}

// Of both protocols, also when the first one fails.
MailResult InternetBackEnd::Logout(MailRequest& request) {
  EngineRunner::Call call(runner_);
  const auto system = request.instance.mailSystem;
  const auto leave = [&](const char* context, Task<SessionResult> logout) {
    return runner_.Perform(call, NewOrder(request, "Logout", asynch_operation::kNone, context),
                           std::move(logout));
  };
  MailResult result;
  if (ServesSmtp(system)) {
    result = leave("Failed to Log off of SMTP server.", Engine().LogoutSMTP());
  }
  if (ServesPop(system)) {
    auto popResult = leave("Failed to Log off of POP server.", Engine().LogoutPOP());
    if (!popResult.Succeeded()) result = std::move(popResult);
  }
  return result;
}

MailResult InternetBackEnd::Send(MailRequest& request) {
  RequireSmtp(request);
  runner_.RequireIdle();
  login_.PrepareSmtp(request);
  EngineRunner::Call call(runner_);
  auto& message = request.shared.message;
  const auto& switches = request.shared.switches;
  message.refusedRecipients.clear();
  const ComposerSettings composing{switches.temporaryDirectory, switches.keepTemporaryFiles,
                                   switches.blockSize};
  auto settings = Smtp(request);
  auto sending = Engine().Send(std::move(settings), Outgoing(request), composing,
                               Bytes(switches.envelopeRecipient));
  LogUnprotected(request.instance);
  auto order = NewOrder(request, "Send", asynch_operation::kSend, "Failed to send the message.");
  order.whenOver = [this, &shared = request.shared, &message, inUtf8 = !form_.charset.empty()] {
    Report(shared);
    for (const auto& recipient : Engine().RefusedRecipients()) {
      message.refusedRecipients.push_back(inUtf8 ? recipient : Text(recipient));
    }
  };
  return runner_.Perform(call, std::move(order),
                         Sent(std::move(sending), request.instance.smtpServer));
}

// An option that a mail system does not know is no failure, but this one somebody may rely on.
void InternetBackEnd::LogUnprotected(const InstanceState& instance) {
  if (instance.signedMessage == kFalse && instance.encrypt == kFalse) return;
  ports_.log.WriteDebug("The message is neither signed nor encrypted: Internet mail does neither.");
}

Task<SessionResult> InternetBackEnd::Sent(Task<SessionResult> sending, std::string host) {
  auto result = co_await sending;
  const bool wentOut =
      result.number == internet_error::kSuccess || result.number == internet_error::kSomeRefused;
  if (wentOut) login_.RememberSmtp(host);
  co_return result;
}

Task<SessionResult> InternetBackEnd::Received(Task<SessionResult> receiving, std::string host) {
  auto result = co_await receiving;
  if (result.number == internet_error::kSuccess) login_.RememberPop(host);
  co_return result;
}

MailResult InternetBackEnd::LoadMessageHeaders(MailRequest& request) {
  const auto single = static_cast<std::uint32_t>(request.shared.switches.singleHeader);
  auto wanted = single == 0 ? HeaderRequest{HeaderRequest::Kind::All}
                            : HeaderRequest{HeaderRequest::Kind::Single, single};
  return LoadHeaders(request, "LoadMessageHeaders", asynch_operation::kLoadMessageHeaders, wanted);
}

MailResult InternetBackEnd::LoadMessageIdentifiers(MailRequest& request) {
  return LoadHeaders(request, "LoadMessageIdentifiers", asynch_operation::kLoadMessageIdentifiers,
                     {HeaderRequest::Kind::Identifiers});
}

MailResult InternetBackEnd::LoadHeaders(MailRequest& request, const char* member,
                                        std::int32_t operation, HeaderRequest wanted) {
  RequirePop(request);
  runner_.RequireIdle();
  login_.PreparePop(request);
  EngineRunner::Call call(runner_);
  const auto& instance = request.instance;
  HeaderOptions options{static_cast<std::size_t>(instance.maximumHeaders),
                        instance.unreadOnly != kFalse, Bytes(instance.dateFormat)};
  if (instance.unreadOnly == kFalse) {
    wanted.most = static_cast<std::uint32_t>(instance.maximumHeaders);
  }
  auto settings = Pop(request);
  auto mailbox = MailboxOf(settings);
  const bool leavesOut =
      instance.unreadOnly != kFalse && wanted.kind != HeaderRequest::Kind::Identifiers;
  auto update =
      std::make_unique<HeaderUpdate>(request.shared, Reading(rawHeaders_), std::move(options),
                                     leavesOut ? FetchedBefore(mailbox) : nullptr, [this, mailbox] {
                                       return HeaderOrigin{mailbox, Engine().POPSession()};
                                     });
  wanted.fetched = update->Fetched();
  auto loading = Engine().LoadMessageHeaders(std::move(settings), wanted, update->Collector());
  auto loaded = HeadersLoaded(std::move(loading), std::move(update), std::move(mailbox));
  return runner_.Perform(
      call, NewOrder(request, member, operation, "Failed to load the message headers."),
      Received(std::move(loaded), instance.postOffice));
}

Task<SessionResult> InternetBackEnd::HeadersLoaded(Task<SessionResult> loading,
                                                   std::unique_ptr<HeaderUpdate> update,
                                                   std::string mailbox) {
  auto result = co_await loading;
  if (const auto* const fetched = update->Fetched()) Forget(mailbox, *fetched);
  co_return result;
}

std::unique_ptr<FetchedList> InternetBackEnd::FetchedBefore(const std::string& mailbox) const {
  if (!trackUnread_) return nullptr;
  return std::make_unique<FetchedList>(ports_.fetched.Read(mailbox));
}

// Not urgent: the next list shows it again.
void InternetBackEnd::Forget(const std::string& mailbox, const FetchedList& fetched) {
  const auto gone = fetched.Gone();
  if (gone.empty()) return;
  const auto lock = ports_.fetched.Lock();
  if (lock) ports_.fetched.Remove(mailbox, gone);
}

MailResult InternetBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  RequirePop(request);
  runner_.RequireIdle();
  login_.PreparePop(request);
  EngineRunner::Call call(runner_);
  HeaderCollector collector({std::numeric_limits<std::size_t>::max(), true, "NATIVE"});
  auto settings = Pop(request);
  const auto mailbox = MailboxOf(settings);
  const auto fetched = FetchedBefore(mailbox);
  HeaderRequest wanted;
  wanted.fetched = fetched.get();
  auto loading = Engine().LoadMessageHeaders(std::move(settings), wanted, collector);
  auto result = runner_.Perform(call,
                                NewOrder(request, "UnreadCount", asynch_operation::kNone,
                                         "Failed to count the unread messages."),
                                std::move(loading));
  if (fetched) Forget(mailbox, *fetched);
  count = static_cast<std::int32_t>(collector.Table().size());
  return result;
}

MailResult InternetBackEnd::LoadMessage(MailRequest& request) {
  RequirePop(request);
  runner_.RequireIdle();
  login_.PreparePop(request);
  EngineRunner::Call call(runner_);
  auto settings = Pop(request);
  auto split = SplitSettingsOf(request, ports_.files);
  split.rawHeaders = rawHeaders_;
  split.expandTnef = expandTnef_;
  const auto newCollector = [&] {
    return std::make_unique<MessageCollector>(ports_.files, Reading(rawHeaders_).reader, split,
                                              Bytes(request.instance.dateFormat),
                                              [this] { return MostMessageBytes(); });
  };
  auto collector = newCollector();
  auto key = CurrentMessage(request, settings, ports_.codePage);
  auto parts = expandTnef_ ? PartsOfCurrent(request, Reading(rawHeaders_).reader, ports_.codePage)
                           : std::vector<MessageKey>();
  const bool tracked = trackUnread_ && request.instance.peekOnly == kFalse;
  const auto fetching = std::make_shared<Fetching>(
      Fetching{request.shared, rawHeaders_, tracked, MailboxOf(settings), {}});
  auto loading = OfListed(
      Engine().LoadMessage(settings, std::move(key), *collector, fetching->NextIdentifier()));
  auto loaded = MessageLoaded(std::move(loading), std::move(collector), fetching);
  if (!parts.empty()) {
    loaded = PartsLoaded(std::move(settings), std::move(parts), newCollector(), std::move(loaded),
                         fetching);
  }
  return runner_.Perform(call,
                         NewOrder(request, "LoadMessage", asynch_operation::kLoadMessage,
                                  "Failed to load the message."),
                         std::move(loaded));
}

std::uint64_t InternetBackEnd::MostMessageBytes() const {
  const auto megabytes =
      ports_.configuration.ReadNumber("Internet", "MaximumMessageSize", kMostMessageMegabytes);
  return (megabytes > 0 ? static_cast<std::uint64_t>(megabytes) : kMostMessageMegabytes) << 20U;
}

Task<SessionResult> InternetBackEnd::OfListed(Task<SessionResult> work) {
  auto result = co_await work;
  if (result.number == error_code::kNoHeaders) throw ServerError(error_code::kNoHeaders);
  co_return result;
}

Task<SessionResult> InternetBackEnd::MessageLoaded(Task<SessionResult> loading,
                                                   std::unique_ptr<MessageCollector> collector,
                                                   std::shared_ptr<Fetching> fetching) {
  auto result = co_await loading;
  if (result.number == internet_error::kSuccess) co_await Deliver(*collector, *fetching);
  co_return result;
}

// Waits before the message is there: where an operation waits it may be aborted.
Task<> InternetBackEnd::Deliver(MessageCollector& collector, const Fetching& fetching) {
  const auto& identifiers = fetching.identifiers;
  const bool tracked = std::any_of(identifiers.begin(), identifiers.end(), IsUniqueId);
  std::unique_ptr<File> lock;
  if (tracked && ports_.fetched.MakeDirectory()) {
    lock = ports_.fetched.Lock();
    for (int tries = 1; !lock && tries < kLockTries; ++tries) {
      Pause pause(ports_.loop, kLockPause);
      co_await pause;
      lock = ports_.fetched.Lock();
    }
  }
  StoreMessage(fetching.shared, collector, Reading(fetching.rawHeaders));
  if (tracked && !(lock && ports_.fetched.Add(fetching.mailbox, identifiers))) {
    ports_.log.WriteDebug("The message could not be noted as fetched.");
  }
}

Task<SessionResult> InternetBackEnd::PartsLoaded(PopSettings settings,
                                                 std::vector<MessageKey> parts,
                                                 std::unique_ptr<MessageCollector> collector,
                                                 Task<SessionResult> alone,
                                                 std::shared_ptr<Fetching> fetching) {
  PartialMessage whole(*collector, parts.size());
  SessionResult result;
  auto all = *fetching;
  all.identifiers.clear();
  for (const auto& part : parts) {
    result = co_await Engine().LoadMessage(settings, part, whole, all.NextIdentifier());
    if (result.number != internet_error::kSuccess) break;
  }
  if (result.number == internet_error::kSuccess) {
    co_await Deliver(*collector, all);
    co_return result;
  }
  const bool isGone =
      result.number == internet_error::kRetrieveFailed || result.number == error_code::kNoHeaders;
  if (!isGone) co_return result;
  collector.reset();  // with the files that have come
  co_return co_await alone;
}

MailResult InternetBackEnd::DeleteMessage(MailRequest& request) {
  RequirePop(request);
  runner_.RequireIdle();
  login_.PreparePop(request);
  EngineRunner::Call call(runner_);
  auto settings = Pop(request);
  auto key = CurrentMessage(request, settings, ports_.codePage);
  auto deleting = OfListed(Engine().DeleteMessage(std::move(settings), std::move(key)));
  return runner_.Perform(call,
                         NewOrder(request, "DeleteMessage", asynch_operation::kDeleteMessage,
                                  "Failed to delete the message."),
                         std::move(deleting));
}

MailResult InternetBackEnd::MoveCopyMessage(MailRequest& request, const std::string&, bool) {
  RequirePop(request);
  throw ServerError(error_code::kNotSupported,
                    "Cannot move or copy a message with POP. (POPMoveMessage)");
}

MailResult InternetBackEnd::ResolveName(MailRequest& request, const std::string& name,
                                        bool withAddress, std::string& resolved) {
  runner_.RequireIdle();
  login_.PrepareSmtp(request);
  EngineRunner::Call call(runner_);
  auto resolving = Engine().ResolveAddress(Smtp(request), Bytes(name));
  auto result = runner_.Perform(
      call,
      NewOrder(request, "ResolveName", asynch_operation::kNone, "Failed to resolve the name."),
      std::move(resolving));
  resolved = Text(Engine().ResolvedAddress());
  const bool bare = !resolved.empty() && resolved.find('<') == std::string::npos;
  if (withAddress && bare) resolved = name + " <" + resolved + ">";
  return result;
}

void InternetBackEnd::Shutdown(std::int32_t) {
  runner_.Shutdown(kShutdownPatience);
}

void InternetBackEnd::AsynchAbort() {
  runner_.AsynchAbort();
}

std::string InternetBackEnd::ErrorText(MailSystemId system, std::int32_t number) const {
  return runner_.ErrorText(system, number);
}

}  // namespace quillon
