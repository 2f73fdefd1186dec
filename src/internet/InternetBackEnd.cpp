#include "internet/InternetBackEnd.h"

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <limits>
#include <utility>

#include "core/RecipientText.h"
#include "core/Text.h"
#include "internet/Address.h"
#include "internet/InternetErrorText.h"
#include "internet/PopReply.h"
#include "internet/smtppop.h"

namespace quillon {

namespace {

constexpr const char* kConfigurationSection = "Internet";
constexpr const char* kConfigurationKey = "SMTPServer";
constexpr const char* kSmtpLoginFailed = "Failed to Logon to SMTP server.";
constexpr const char* kPopLoginFailed = "Failed to Logon to POP server";

constexpr std::int32_t kUnknownError = 6;
constexpr std::int32_t kSomeRefused = 20;
constexpr std::int32_t kAborted = 522;

// How long the last Server of a process may take to leave the servers, in milliseconds.
constexpr TickCount kShutdownPatience = 1000;

// About that much of a header comes over the wire: the display's threshold is in bytes.
constexpr std::uint64_t kBytesPerHeader = 1000;

constexpr bool ServesPop(MailSystemId system) {
  return system == mail_system::kPop3 || system == mail_system::kInternet;
}
constexpr bool ServesSmtp(MailSystemId system) {
  return system == mail_system::kSmtp || system == mail_system::kInternet;
}

SessionSettings TimesOf(const MailRequest& request) {
  const auto& internet = request.shared.internet;
  SessionSettings settings;
  settings.timeoutConnect = static_cast<TickCount>(internet.timeoutConnect);
  settings.timeoutProtocol = static_cast<TickCount>(internet.timeoutProtocol);
  settings.timeoutSend = static_cast<TickCount>(internet.TimeoutSend());
  return settings;
}

const HeaderRecord& CurrentHeader(const MailRequest& request) {
  const auto index = request.instance.messageIndex;
  const auto& headers = request.shared.headers;
  if (index < 0 || static_cast<std::size_t>(index) >= headers.size()) throw ServerError(533);
  return headers[static_cast<std::size_t>(index)];
}

std::uint32_t CurrentNumber(const MailRequest& request) {
  std::string_view text = CurrentHeader(request).number;
  const auto number = TakeNumber(text);
  if (!number || *number > std::numeric_limits<std::uint32_t>::max()) throw ServerError(533);
  return static_cast<std::uint32_t>(*number);
}

}  // namespace

// One engine operation, and what is done with its result.
struct InternetBackEnd::Step {
  Adapter adapter;
  const char* context;  // what has failed when it fails
  std::function<void(smtppop&)> begin;
  std::function<void(std::int32_t result)> finish = [](std::int32_t) {};
};

// What a call has the engine do.
struct InternetBackEnd::Process {
  std::int32_t operation = asynch_operation::kNone;  // none: the client waits in any case
  MailSystemId system = mail_system::kNone;
  bool errorDisplay = false;
  DisplayOptions display;
  std::deque<Step> steps;  // one after the other, as long as they succeed
};

// A call at work. The loop serves other calls while it waits, and those must not enter a session
// that is at work.
class InternetBackEnd::Call {
 public:
  explicit Call(InternetBackEnd& owner) : owner_(&owner) {
    if (owner.ports_.notifier.InCallback()) throw ServerError(541);
    if (std::exchange(owner.busy_, true)) throw ServerError(540);
  }
  ~Call() {
    if (owner_ != nullptr) owner_->busy_ = false;
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  // The work goes on when the call has returned; its end will free the engine.
  void LeaveRunning() { owner_ = nullptr; }

 private:
  InternetBackEnd* owner_;
};

InternetBackEnd::InternetBackEnd(const InternetPorts& ports, InternetProduct product)
    : ports_(ports),
      product_(std::move(product)),
      reporter_(ports.loop, ports.notifier, ports.progress) {}

InternetBackEnd::~InternetBackEnd() = default;

smtppop& InternetBackEnd::Engine() {
  if (!engine_) {
    engine_ = std::make_unique<smtppop>(
        ports_.loop, ports_.network,
        ComposerPorts{ports_.files, ports_.codePage, ports_.clock, ports_.log}, &reporter_);
  }
  return *engine_;
}

InternetBackEnd::Process InternetBackEnd::NewProcess(const MailRequest& request,
                                                     std::int32_t operation) {
  const auto& internet = request.shared.internet;
  Process process;
  process.operation = operation;
  process.system = request.instance.mailSystem;
  process.errorDisplay = request.instance.errorDisplay != kFalse;
  const bool sends = operation == asynch_operation::kSend;
  process.display.caption = sends ? "Sending Mail" : "Internet Mail";
  process.display.parts = internet.progressBar;
  process.display.threshold = static_cast<std::uint64_t>(internet.progressBarThreshold);
  if (operation == asynch_operation::kLoadMessageHeaders) {
    process.display.threshold /= kBytesPerHeader;
  }
  process.display.abort = [this] { Abort(); };
  return process;
}

// With an object registered the operation goes on by itself, and its result is told to the object.
std::int32_t InternetBackEnd::Perform(Call& call, Process process) {
  reporter_.Begin(process.operation, process.display);
  if (process.operation != asynch_operation::kNone && ports_.notifier.Registered()) {
    process_ = std::make_shared<Process>(std::move(process));
    try {
      BeginStep();
    } catch (...) {
      process_.reset();
      throw;
    }
    ports_.notifier.SetInProgress();
    call.LeaveRunning();
    return kBackEndSuccess;
  }
  auto result = kBackEndSuccess;
  try {
    for (const auto& step : process.steps) {
      result = Run(process, step);
      if (result != kBackEndSuccess) break;
    }
  } catch (...) {
    reporter_.End();
    throw;
  }
  reporter_.End();
  if (result == kAborted) throw ServerError(kAborted);
  return result;
}

std::int32_t InternetBackEnd::Run(const Process& process, const Step& step) {
  step.begin(Engine());
  const auto result = Engine().Wait();
  step.finish(result);
  Note(process, step, result);
  return result;
}

void InternetBackEnd::BeginStep() {
  process_->steps.front().begin(Engine());
  Engine().WhenDone([this] { EndStep(); });
}

void InternetBackEnd::EndStep() {
  const auto process = process_;
  try {
    const auto result = Engine().TakeResult();
    const auto step = std::move(process->steps.front());
    process->steps.pop_front();
    step.finish(result);
    Note(*process, step, result);
    if (process != process_) return;  // aborted meanwhile
    if (result == kBackEndSuccess && !process->steps.empty()) return BeginStep();
    EndProcess(result, {});
  } catch (const ServerError& error) {
    EndProcess(error.Code(), error.Text());
  } catch (const std::exception& error) {
    EndProcess(kUnknownError, error.what());
  }
}

void InternetBackEnd::EndProcess(std::int32_t result, std::string text) {
  const auto process = std::move(process_);
  if (text.empty() && result != kBackEndSuccess) text = ErrorText(process->system, result);
  auto event = reporter_.Last();
  reporter_.End();
  busy_ = false;
  event.kind = asynch_kind::kEndOfProcess;
  event.result = result;
  event.tag = "END";
  if (!text.empty()) event.text = std::move(text);
  ports_.notifier.Post(event);
}

// The abort has events of its own; what is running ends without one.
void InternetBackEnd::AsynchAbort() {
  if (process_ != nullptr) {
    Engine().WhenDone(nullptr);
    Abort();
    const auto process = std::move(process_);
    if (!process->steps.empty()) process->steps.front().finish(Engine().Wait());
    reporter_.End();
    busy_ = false;
  } else {
    Abort();
  }
}

bool InternetBackEnd::Supports(MailSystemId system, Operation operation) const {
  switch (operation) {
    case Operation::Login:
    case Operation::Logout:
      return true;
    case Operation::Send:
    case Operation::ResolveName:
      return ServesSmtp(system);
    case Operation::LoadMessageHeaders:
    case Operation::LoadMessageIdentifiers:
    case Operation::LoadMessage:
    case Operation::DeleteMessage:
    case Operation::MoveCopyMessage:
    case Operation::UnreadCount:
      return ServesPop(system);
    default:
      return false;
  }
}

// For both protocols together, one whose data is there is logged into; when neither's is, the user
// is asked for POP's.
std::int32_t InternetBackEnd::Login(MailRequest& request) {
  Call call(*this);
  const auto& instance = request.instance;
  const auto system = instance.mailSystem;
  const bool smtpData = !instance.smtpServer.empty() && !request.shared.message.from.empty();
  const bool smtp = system == mail_system::kSmtp || (ServesSmtp(system) && smtpData);
  const bool pop = system == mail_system::kPop3 ||
                   (ServesPop(system) && (!instance.postOffice.empty() || !smtp));
  auto process = NewProcess(request, asynch_operation::kLogin);
  if (pop) {
    PreparePop(request);
    process.steps.push_back(
        {Adapter::Pop, kPopLoginFailed,
         [settings = PopSettingsOf(request)](smtppop& engine) { engine.BeginLoginPOP(settings); }});
  }
  if (smtp) {
    PrepareSmtp(request);
    process.steps.push_back(
        {Adapter::Smtp, kSmtpLoginFailed, [settings = SmtpSettingsOf(request)](smtppop& engine) {
           engine.BeginLoginSMTP(settings);
         }});
  }
  return Perform(call, std::move(process));
}

// Of both protocols, also when the first one fails.
std::int32_t InternetBackEnd::Logout(MailRequest& request) {
  const Call call(*this);
  const auto system = request.instance.mailSystem;
  const auto process = NewProcess(request, asynch_operation::kNone);
  auto result = kBackEndSuccess;
  if (ServesSmtp(system)) {
    result = Run(process, {Adapter::Smtp, "Failed to Log off of SMTP server.",
                           [](smtppop& engine) { engine.BeginLogoutSMTP(); }});
  }
  if (ServesPop(system)) {
    const auto popResult = Run(process, {Adapter::Pop, "Failed to Log off of POP server.",
                                         [](smtppop& engine) { engine.BeginLogoutPOP(); }});
    if (popResult != kBackEndSuccess) result = popResult;
  }
  if (result == kAborted) throw ServerError(kAborted);
  return result;
}

std::int32_t InternetBackEnd::Send(MailRequest& request) {
  Call call(*this);
  auto& shared = request.shared;
  const auto& switches = shared.switches;
  shared.message.refusedRecipients.clear();
  PrepareSmtp(request);
  const ComposerSettings composing{switches.temporaryDirectory, switches.keepTemporaryFiles,
                                   switches.blockSize};
  auto process = NewProcess(request, asynch_operation::kSend);
  process.steps.push_back(
      {Adapter::Smtp, "Failed to send the message.",
       [settings = SmtpSettingsOf(request),
        message = std::make_shared<OutgoingMessage>(MessageOf(request)), composing,
        override = Bytes(switches.envelopeRecipient)](smtppop& engine) {
         engine.BeginSend(settings, std::move(*message), composing, override);
       },
       [this, &shared, host = SmtpHost(request)](std::int32_t result) {
         for (const auto& recipient : Engine().RefusedRecipients()) {
           shared.message.refusedRecipients.push_back(Text(recipient));
         }
         if (result == kBackEndSuccess || result == kSomeRefused) RememberServer(host);
       }});
  return Perform(call, std::move(process));
}

std::int32_t InternetBackEnd::LoadMessageHeaders(MailRequest& request) {
  const auto single = static_cast<std::uint32_t>(request.shared.switches.singleHeader);
  if (single == 0) return LoadHeaders(request, {HeaderRequest::Kind::All});
  return LoadHeaders(request, {HeaderRequest::Kind::Single, single});
}

std::int32_t InternetBackEnd::LoadMessageIdentifiers(MailRequest& request) {
  return LoadHeaders(request, {HeaderRequest::Kind::Identifiers});
}

std::int32_t InternetBackEnd::LoadHeaders(MailRequest& request, HeaderRequest wanted) {
  Call call(*this);
  PreparePop(request);
  const auto& instance = request.instance;
  const auto collector = std::make_shared<HeaderCollector>(
      HeaderOptions{static_cast<std::size_t>(instance.maximumHeaders),
                    instance.unreadOnly != kFalse, Bytes(instance.dateFormat)});
  auto process = NewProcess(request, wanted.kind == HeaderRequest::Kind::Identifiers
                                         ? asynch_operation::kLoadMessageIdentifiers
                                         : asynch_operation::kLoadMessageHeaders);
  process.steps.push_back({Adapter::Pop, "Failed to load the message headers.",
                           [settings = PopSettingsOf(request), wanted, collector,
                            &shared = request.shared](smtppop& engine) {
                             engine.BeginLoadMessageHeaders(settings, wanted, *collector);
                             shared.headers = {};  // its memory serves the new one
                           },
                           [this, &shared = request.shared, collector](std::int32_t result) {
                             if (result == kBackEndSuccess)
                               shared.headers = TextTable(std::move(collector->Table()));
                           }});
  return Perform(call, std::move(process));
}

std::int32_t InternetBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  Call call(*this);
  PreparePop(request);
  HeaderCollector collector({std::numeric_limits<std::size_t>::max(), true, "NATIVE"});
  auto process = NewProcess(request, asynch_operation::kNone);
  process.steps.push_back(
      {Adapter::Pop, "Failed to count the unread messages.",
       [&](smtppop& engine) {
         engine.BeginLoadMessageHeaders(PopSettingsOf(request), {}, collector);
       },
       [&](std::int32_t) { count = static_cast<std::int32_t>(collector.Table().size()); }});
  return Perform(call, std::move(process));
}

std::int32_t InternetBackEnd::LoadMessage(MailRequest& request) {
  Call call(*this);
  PreparePop(request);
  const auto collector =
      std::make_shared<MessageCollector>(ports_.files, ports_.codePage, SplitSettingsOf(request),
                                         MessageOptions{request.instance.headersInMessage != kFalse,
                                                        Bytes(request.instance.dateFormat)});
  auto process = NewProcess(request, asynch_operation::kLoadMessage);
  process.steps.push_back(
      {Adapter::Pop, "Failed to load the message.",
       [settings = PopSettingsOf(request), number = CurrentNumber(request),
        collector](smtppop& engine) { engine.BeginLoadMessage(settings, number, *collector); },
       [this, &shared = request.shared, collector](std::int32_t result) {
         if (result == kBackEndSuccess) StoreMessage(shared, *collector);
       }});
  return Perform(call, std::move(process));
}

void InternetBackEnd::StoreMessage(SharedState& shared, MessageCollector& collector) const {
  const auto& fields = collector.Fields();
  auto& message = shared.message;
  message.to = SplitRecipients(Text(fields.to), ",", "<>");
  message.cc = SplitRecipients(Text(fields.cc), ",", "<>");
  message.bcc.clear();
  message.attachments = std::move(collector.Message().attachments);
  message.from = Text(fields.originator);
  message.subject = Text(fields.subject);
  message.dateSent = Text(fields.dateText);
  message.rawHeaders = Text(collector.RawHeaders());
  message.body = Text(collector.Message().body);
}

std::int32_t InternetBackEnd::DeleteMessage(MailRequest& request) {
  Call call(*this);
  PreparePop(request);
  auto process = NewProcess(request, asynch_operation::kDeleteMessage);
  process.steps.push_back({Adapter::Pop, "Failed to delete the message.",
                           [settings = PopSettingsOf(request), number = CurrentNumber(request)](
                               smtppop& engine) { engine.BeginDeleteMessage(settings, number); }});
  return Perform(call, std::move(process));
}

std::int32_t InternetBackEnd::MoveCopyMessage(MailRequest&, const std::string&, bool) {
  throw ServerError(530, "Cannot move or copy a message with POP. (POPMoveMessage)");
}

std::int32_t InternetBackEnd::ResolveName(MailRequest& request, const std::string& name,
                                          bool withAddress, std::string& resolved) {
  Call call(*this);
  PrepareSmtp(request);
  auto process = NewProcess(request, asynch_operation::kNone);
  process.steps.push_back(
      {Adapter::Smtp, "Failed to resolve the name.",
       [&](smtppop& engine) { engine.BeginResolveAddress(SmtpSettingsOf(request), Bytes(name)); },
       [&](std::int32_t) { resolved = Text(Engine().ResolvedAddress()); }});
  const auto result = Perform(call, std::move(process));
  const bool bare = !resolved.empty() && resolved.find('<') == std::string::npos;
  if (withAddress && bare) resolved = name + " <" + resolved + ">";
  return result;
}

void InternetBackEnd::Shutdown(std::int32_t) {
  if (process_ != nullptr) AsynchAbort();
  if (engine_) engine_->Shutdown(kShutdownPatience);
}

void InternetBackEnd::Abort() {
  if (engine_) engine_->Abort();
}

std::string InternetBackEnd::TableText(MailSystemId system, std::int32_t number) const {
  const bool popIsAtWork = engine_ && engine_->ProtocolSelector() == smtppop::Protocol::Pop;
  const bool pop =
      system == mail_system::kPop3 || (system == mail_system::kInternet && popIsAtWork);
  if (!pop) return SmtpErrorText(number);
  return PopErrorText(number, engine_ ? Text(engine_->LastPOPErrorDescription()) : "");
}

std::string InternetBackEnd::ErrorText(MailSystemId system, std::int32_t number) const {
  auto text = TableText(system, number);
  return text.empty() && number == lastNumber_ ? lastContext_ : text;
}

void InternetBackEnd::Note(const Process& process, const Step& step, std::int32_t result) {
  if (result == kBackEndSuccess) return;
  const bool pop = step.adapter == Adapter::Pop;
  // Codes 2 and 4 mean that there was no connection, whatever it was wanted for.
  const bool connected =
      result != SocketConnect::kNotConnected && result != SocketConnect::kNotStarted;
  lastNumber_ = result;
  lastContext_ = connected ? step.context : pop ? kPopLoginFailed : kSmtpLoginFailed;
  if (!process.errorDisplay) return;
  const auto text = TableText(process.system, result);
  ports_.messageBox.Show(pop ? "POP Mail Error" : "SMTP Mail Error",
                         TrimmedCopy(lastContext_ + ": {" + std::to_string(result) + "} " + text),
                         MessageBoxPort::Icon::Critical);
}

std::string InternetBackEnd::SmtpHost(const MailRequest& request) const {
  if (!request.instance.smtpServer.empty()) return request.instance.smtpServer;
  return ports_.configuration.ReadString(kConfigurationSection, kConfigurationKey);
}

// Looks into the file only when the server has changed: a look takes longer than some messages do.
void InternetBackEnd::RememberServer(const std::string& host) {
  if (host == rememberedServer_) return;
  auto& configuration = ports_.configuration;
  if (configuration.ReadString(kConfigurationSection, kConfigurationKey) != host) {
    configuration.WriteString(kConfigurationSection, kConfigurationKey, host);
  }
  rememberedServer_ = host;
}

bool InternetBackEnd::AskForLogin(const MailRequest& request, const char* caption,
                                  LoginFields& fields) {
  if (request.instance.loginDialog == kFalse) return false;
  const auto answer = ports_.loginPrompt.Ask(caption, fields);
  if (answer == LoginPrompt::Answer::Cancelled) {
    throw ServerError(kAborted, "User selected cancel in dialog.");
  }
  return answer == LoginPrompt::Answer::Entered;
}

void InternetBackEnd::PreparePop(MailRequest& request) {
  auto& instance = request.instance;
  const auto complete = [&] { return !instance.postOffice.empty() && !instance.loginName.empty(); };
  if (complete()) return;
  LoginFields fields{instance.postOffice, instance.loginName, instance.password};
  if (AskForLogin(request, "POP Login", fields)) {
    instance.postOffice = fields.server;
    instance.loginName = fields.name;
    instance.password = fields.password;
  }
  if (!complete()) throw ServerError(544);
}

void InternetBackEnd::PrepareSmtp(MailRequest& request) {
  auto& from = request.shared.message.from;
  const auto complete = [&] { return !SmtpHost(request).empty() && !from.empty(); };
  if (complete()) return;
  LoginFields fields{SmtpHost(request), from, {}};
  if (AskForLogin(request, "SMTP Login", fields)) {
    request.instance.smtpServer = fields.server;
    from = fields.name;
  }
  if (!complete()) throw ServerError(544);
}

SmtpSettings InternetBackEnd::SmtpSettingsOf(const MailRequest& request) const {
  SmtpSettings settings;
  static_cast<SessionSettings&>(settings) = TimesOf(request);
  settings.host = Bytes(SmtpHost(request));
  settings.port = request.shared.internet.smtpPort;
  settings.sender = BareAddress(Bytes(request.shared.message.from));
  settings.greetWithHelo = request.shared.switches.greetWithHelo;
  return settings;
}

PopSettings InternetBackEnd::PopSettingsOf(const MailRequest& request) const {
  PopSettings settings;
  static_cast<SessionSettings&>(settings) = TimesOf(request);
  settings.host = Bytes(request.instance.postOffice);
  settings.port = request.shared.internet.popPort;
  settings.loginName = Bytes(request.instance.loginName);
  settings.password = Bytes(request.instance.password);
  return settings;
}

SplitSettings InternetBackEnd::SplitSettingsOf(const MailRequest& request) const {
  const auto& instance = request.instance;
  const auto& switches = request.shared.switches;
  SplitSettings settings;
  settings.directory = instance.attachmentDirectory;
  if (settings.directory.empty()) settings.directory = switches.temporaryDirectory;
  if (settings.directory.empty()) settings.directory = ports_.files.TempDirectory();
  settings.suppressAttachments = instance.suppressAttachments != kFalse;
  settings.suppressAlternatives = request.shared.internet.suppressAlternatives != kFalse;
  settings.returnShortPaths = instance.returnShortFilespecs != kFalse;
  settings.maximumBodyLines = static_cast<std::size_t>(switches.maximumBodyLines);
  return settings;
}

OutgoingMessage InternetBackEnd::MessageOf(const MailRequest& request) const {
  const auto& source = request.shared.message;
  const auto toBytes = [this](const std::vector<std::string>& texts) {
    std::vector<std::string> bytes;
    bytes.reserve(texts.size());
    for (const auto& text : texts) bytes.push_back(Bytes(text));
    return bytes;
  };
  OutgoingMessage message;
  message.from = Bytes(source.from);
  message.whoTo = toBytes(source.to);
  message.cc = toBytes(source.cc);
  message.bcc = toBytes(source.bcc);
  message.subject = Bytes(source.subject);
  message.body = Bytes(source.body);
  message.replyTo = Bytes(source.replyTo);
  message.charset = Bytes(request.shared.internet.characterSet);
  message.xMailer = Bytes(request.instance.xMailer);
  for (const auto& header : source.xHeaders) {
    message.xHeaders.push_back({Bytes(header.name), Bytes(header.value)});
  }
  for (const auto& alternative : source.alternatives) {
    message.alternatives.push_back({alternative.file, Bytes(alternative.contentType)});
  }
  message.attachments = source.attachments;
  message.attachmentEncoding = request.instance.attachmentEncoding;
  message.zipPassword = request.instance.zipPassword;
  message.importance = request.instance.importance;
  message.certify = source.certify != kFalse;
  message.utcOffset = request.instance.utcOffset;
  message.version = product_.version;
  message.specialBuild = product_.specialBuild;
  return message;
}

HeaderTable InternetBackEnd::TextTable(HeaderTable table) const {
  constexpr std::array kTexts = {
      &HeaderRecord::uniqueId,      &HeaderRecord::dateText,  &HeaderRecord::subject,
      &HeaderRecord::originator,    &HeaderRecord::to,        &HeaderRecord::cc,
      &HeaderRecord::status,        &HeaderRecord::messageId, &HeaderRecord::replyAddress,
      &HeaderRecord::contentLength, &HeaderRecord::size,      &HeaderRecord::transferEncoding,
      &HeaderRecord::contentType,   &HeaderRecord::mailer};
  const auto isAscii = [](char c) { return (static_cast<unsigned char>(c) & 0x80U) == 0; };
  for (auto& record : table) {
    for (const auto member : kTexts) {
      auto& text = record.*member;
      if (!std::all_of(text.begin(), text.end(), isAscii)) text = Text(text);
    }
  }
  return table;
}

}  // namespace quillon
