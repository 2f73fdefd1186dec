#include "internet/InternetBackEnd.h"

#include <algorithm>
#include <array>
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

constexpr std::int32_t kSomeRefused = 20;
constexpr std::int32_t kAborted = 522;

// How long the last Server of a process may take to leave the servers, in milliseconds.
constexpr TickCount kShutdownPatience = 1000;

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

// One operation. The loop serves other calls while it waits, and those must not enter a session
// that is at work.
class InternetBackEnd::Call {
 public:
  explicit Call(InternetBackEnd& owner) : owner_(owner) {
    if (std::exchange(owner_.busy_, true)) throw ServerError(540);
  }
  ~Call() { owner_.busy_ = false; }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  InternetBackEnd& owner_;
};

InternetBackEnd::InternetBackEnd(const InternetPorts& ports, InternetProduct product)
    : ports_(ports), product_(std::move(product)) {}

InternetBackEnd::~InternetBackEnd() = default;

smtppop& InternetBackEnd::Engine() {
  if (!engine_) {
    engine_ = std::make_unique<smtppop>(
        ports_.loop, ports_.network,
        ComposerPorts{ports_.files, ports_.codePage, ports_.clock, ports_.log});
  }
  return *engine_;
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
  const Call call(*this);
  const auto& instance = request.instance;
  const auto system = instance.mailSystem;
  const bool smtpData = !instance.smtpServer.empty() && !request.shared.message.from.empty();
  const bool smtp = system == mail_system::kSmtp || (ServesSmtp(system) && smtpData);
  const bool pop = system == mail_system::kPop3 ||
                   (ServesPop(system) && (!instance.postOffice.empty() || !smtp));
  auto result = kBackEndSuccess;
  if (pop) result = LoginPop(request);
  if (smtp && result == kBackEndSuccess) result = LoginSmtp(request);
  return result;
}

std::int32_t InternetBackEnd::LoginPop(MailRequest& request) {
  PreparePop(request);
  return Report(request, Adapter::Pop, Engine().LoginPOP(PopSettingsOf(request)), kPopLoginFailed);
}

std::int32_t InternetBackEnd::LoginSmtp(MailRequest& request) {
  PrepareSmtp(request);
  return Report(request, Adapter::Smtp, Engine().LoginSMTP(SmtpSettingsOf(request)),
                kSmtpLoginFailed);
}

std::int32_t InternetBackEnd::Logout(MailRequest& request) {
  const Call call(*this);
  const auto system = request.instance.mailSystem;
  auto result = kBackEndSuccess;
  if (ServesSmtp(system)) {
    result =
        Report(request, Adapter::Smtp, Engine().LogoutSMTP(), "Failed to Log off of SMTP server.");
  }
  if (!ServesPop(system)) return result;
  const auto popResult =
      Report(request, Adapter::Pop, Engine().LogoutPOP(), "Failed to Log off of POP server.");
  return popResult != kBackEndSuccess ? popResult : result;
}

std::int32_t InternetBackEnd::Send(MailRequest& request) {
  const Call call(*this);
  auto& message = request.shared.message;
  const auto& switches = request.shared.switches;
  message.refusedRecipients.clear();
  PrepareSmtp(request);
  const ComposerSettings composing{switches.temporaryDirectory, switches.keepTemporaryFiles,
                                   switches.blockSize};
  const auto result = Engine().Send(SmtpSettingsOf(request), MessageOf(request), composing,
                                    Bytes(switches.envelopeRecipient));
  for (const auto& recipient : Engine().RefusedRecipients()) {
    message.refusedRecipients.push_back(Text(recipient));
  }
  if (result == kBackEndSuccess || result == kSomeRefused) RememberServer(SmtpHost(request));
  return Report(request, Adapter::Smtp, result, "Failed to send the message.");
}

std::int32_t InternetBackEnd::LoadMessageHeaders(MailRequest& request) {
  return LoadHeaders(request, false);
}

std::int32_t InternetBackEnd::LoadMessageIdentifiers(MailRequest& request) {
  return LoadHeaders(request, true);
}

std::int32_t InternetBackEnd::LoadHeaders(MailRequest& request, bool identifiersOnly) {
  const Call call(*this);
  PreparePop(request);
  const auto& instance = request.instance;
  HeaderCollector collector({static_cast<std::size_t>(instance.maximumHeaders),
                             instance.unreadOnly != kFalse, Bytes(instance.dateFormat)});
  HeaderRequest headers;
  if (identifiersOnly) headers.kind = HeaderRequest::Kind::Identifiers;
  const auto result = Engine().LoadMessageHeaders(PopSettingsOf(request), headers, collector);
  request.shared.headers.clear();
  if (result == kBackEndSuccess) {
    request.shared.headers = TextTable(std::move(collector.Table()));
  }
  return Report(request, Adapter::Pop, result, "Failed to load the message headers.");
}

std::int32_t InternetBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  const Call call(*this);
  PreparePop(request);
  HeaderCollector collector({std::numeric_limits<std::size_t>::max(), true, "NATIVE"});
  const auto result = Engine().LoadMessageHeaders(PopSettingsOf(request), {}, collector);
  count = static_cast<std::int32_t>(collector.Table().size());
  return Report(request, Adapter::Pop, result, "Failed to count the unread messages.");
}

std::int32_t InternetBackEnd::LoadMessage(MailRequest& request) {
  const Call call(*this);
  PreparePop(request);
  MessageCollector collector(
      ports_.files, ports_.codePage, SplitSettingsOf(request),
      {request.instance.headersInMessage != kFalse, Bytes(request.instance.dateFormat)});
  const auto result =
      Engine().LoadMessage(PopSettingsOf(request), CurrentNumber(request), collector);
  if (result == kBackEndSuccess) StoreMessage(request, collector);
  return Report(request, Adapter::Pop, result, "Failed to load the message.");
}

void InternetBackEnd::StoreMessage(MailRequest& request, MessageCollector& collector) const {
  const auto& fields = collector.Fields();
  auto& message = request.shared.message;
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
  const Call call(*this);
  PreparePop(request);
  const auto result = Engine().DeleteMessage(PopSettingsOf(request), CurrentNumber(request));
  return Report(request, Adapter::Pop, result, "Failed to delete the message.");
}

std::int32_t InternetBackEnd::MoveCopyMessage(MailRequest&, const std::string&, bool) {
  throw ServerError(530, "Cannot move or copy a message with POP. (POPMoveMessage)");
}

std::int32_t InternetBackEnd::ResolveName(MailRequest& request, const std::string& name,
                                          bool withAddress, std::string& resolved) {
  const Call call(*this);
  PrepareSmtp(request);
  std::string bytes;
  const auto result = Engine().ResolveAddress(SmtpSettingsOf(request), Bytes(name), bytes);
  resolved = Text(bytes);
  const bool bare = !resolved.empty() && resolved.find('<') == std::string::npos;
  if (withAddress && bare) resolved = name + " <" + resolved + ">";
  return Report(request, Adapter::Smtp, result, "Failed to resolve the name.");
}

void InternetBackEnd::Shutdown(std::int32_t) {
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

std::int32_t InternetBackEnd::Report(const MailRequest& request, Adapter adapter,
                                     std::int32_t result, const char* context) {
  if (result == kBackEndSuccess) return result;
  // Codes 2 and 4 mean that there was no connection, whatever it was wanted for.
  if (result == SocketConnect::kNotConnected || result == SocketConnect::kNotStarted) {
    context = adapter == Adapter::Pop ? kPopLoginFailed : kSmtpLoginFailed;
  }
  lastNumber_ = result;
  lastContext_ = context;
  if (request.instance.errorDisplay != kFalse) {
    const auto text = TableText(request.instance.mailSystem, result);
    ports_.messageBox.Show(adapter == Adapter::Pop ? "POP Mail Error" : "SMTP Mail Error",
                           TrimmedCopy(lastContext_ + ": {" + std::to_string(result) + "} " + text),
                           MessageBoxPort::Icon::Critical);
  }
  if (result == kAborted) throw ServerError(kAborted);
  return result;
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
