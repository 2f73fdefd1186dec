#include "internet/InternetBackEnd.h"

#include <limits>
#include <memory>
#include <utility>

#include "core/ErrorCode.h"
#include "internet/InternetErrorText.h"

namespace quillon {

namespace {

constexpr std::int32_t kSomeRefused = 20;

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

void RequirePop(const MailRequest& request) {
  if (!ServesPop(request.instance.mailSystem)) throw ServerError(error_code::kNotSupported);
}
void RequireSmtp(const MailRequest& request) {
  if (!ServesSmtp(request.instance.mailSystem)) throw ServerError(error_code::kNotSupported);
}

}  // namespace

InternetBackEnd::InternetBackEnd(const InternetPorts& ports, InternetProduct product)
    : ports_(ports),
      product_(std::move(product)),
      login_(ports.loginPrompt, ports.configuration),
      runner_({ports.loop,
               ports.network,
               {ports.files, ports.codePage, ports.clock, ports.log},
               ports.messageBox,
               ports.notifier,
               ports.progress}) {}

EngineProcess InternetBackEnd::NewProcess(const MailRequest& request, std::int32_t operation) {
  const auto& internet = request.shared.internet;
  EngineProcess process;
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
  process.display.abort = [this] { runner_.Abort(); };
  return process;
}

// For both protocols together, one whose data is there is logged into; when neither's is, the user
// is asked for POP's.
MailResult InternetBackEnd::Login(MailRequest& request) {
  EngineRunner::Call call(runner_);
  const auto& instance = request.instance;
  const auto system = instance.mailSystem;
  const bool smtpData = !instance.smtpServer.empty() && !request.shared.message.from.empty();
  const bool smtp = system == mail_system::kSmtp || (ServesSmtp(system) && smtpData);
  const bool pop = system == mail_system::kPop3 ||
                   (ServesPop(system) && (!instance.postOffice.empty() || !smtp));
  auto process = NewProcess(request, asynch_operation::kLogin);
  if (pop) {
    login_.PreparePop(request);
    process.steps.push_back(
        {EngineStep::Adapter::Pop, kPopLoginFailed,
         [settings = Pop(request)](smtppop& engine) { engine.BeginLoginPOP(settings); }});
  }
  if (smtp) {
    login_.PrepareSmtp(request);
    process.steps.push_back(
        {EngineStep::Adapter::Smtp, kSmtpLoginFailed,
         [settings = Smtp(request)](smtppop& engine) { engine.BeginLoginSMTP(settings); }});
  }
  return runner_.Perform(call, std::move(process));
}

// Of both protocols, also when the first one fails.
MailResult InternetBackEnd::Logout(MailRequest& request) {
  const EngineRunner::Call call(runner_);
  const auto system = request.instance.mailSystem;
  const auto process = NewProcess(request, asynch_operation::kNone);
  MailResult result;
  if (ServesSmtp(system)) {
    result = runner_.Run(process, {EngineStep::Adapter::Smtp, "Failed to Log off of SMTP server.",
                                   [](smtppop& engine) { engine.BeginLogoutSMTP(); }});
  }
  if (ServesPop(system)) {
    auto popResult =
        runner_.Run(process, {EngineStep::Adapter::Pop, "Failed to Log off of POP server.",
                              [](smtppop& engine) { engine.BeginLogoutPOP(); }});
    if (!popResult.Succeeded()) result = std::move(popResult);
  }
  if (result.number == error_code::kUserAborted) throw ServerError(error_code::kUserAborted);
  return result;
}

MailResult InternetBackEnd::Send(MailRequest& request) {
  RequireSmtp(request);
  EngineRunner::Call call(runner_);
  auto& shared = request.shared;
  const auto& switches = shared.switches;
  shared.message.refusedRecipients.clear();
  login_.PrepareSmtp(request);
  const ComposerSettings composing{switches.temporaryDirectory, switches.keepTemporaryFiles,
                                   switches.blockSize};
  auto process = NewProcess(request, asynch_operation::kSend);
  process.steps.push_back(
      {EngineStep::Adapter::Smtp, "Failed to send the message.",
       [settings = Smtp(request),
        message = std::make_shared<OutgoingMessage>(MessageOf(request, product_, ports_.codePage)),
        composing, override = Bytes(switches.envelopeRecipient)](smtppop& engine) {
         engine.BeginSend(settings, std::move(*message), composing, override);
       },
       [this, &shared, host = login_.SmtpHost(request)](std::int32_t result) {
         for (const auto& recipient : runner_.Engine().RefusedRecipients()) {
           shared.message.refusedRecipients.push_back(Text(recipient));
         }
         if (result == kBackEndSuccess || result == kSomeRefused) login_.RememberServer(host);
       }});
  return runner_.Perform(call, std::move(process));
}

MailResult InternetBackEnd::LoadMessageHeaders(MailRequest& request) {
  const auto single = static_cast<std::uint32_t>(request.shared.switches.singleHeader);
  if (single == 0) return LoadHeaders(request, {HeaderRequest::Kind::All});
  return LoadHeaders(request, {HeaderRequest::Kind::Single, single});
}

MailResult InternetBackEnd::LoadMessageIdentifiers(MailRequest& request) {
  return LoadHeaders(request, {HeaderRequest::Kind::Identifiers});
}

MailResult InternetBackEnd::LoadHeaders(MailRequest& request, HeaderRequest wanted) {
  RequirePop(request);
  EngineRunner::Call call(runner_);
  login_.PreparePop(request);
  const auto& instance = request.instance;
  const auto collector = std::make_shared<HeaderCollector>(
      HeaderOptions{static_cast<std::size_t>(instance.maximumHeaders),
                    instance.unreadOnly != kFalse, Bytes(instance.dateFormat)});
  auto process = NewProcess(request, wanted.kind == HeaderRequest::Kind::Identifiers
                                         ? asynch_operation::kLoadMessageIdentifiers
                                         : asynch_operation::kLoadMessageHeaders);
  process.steps.push_back(
      {EngineStep::Adapter::Pop, "Failed to load the message headers.",
       [settings = Pop(request), wanted, collector, &shared = request.shared](smtppop& engine) {
         engine.BeginLoadMessageHeaders(settings, wanted, *collector);
         shared.headers = {};  // its memory serves the new one
       },
       [this, &shared = request.shared, collector](std::int32_t result) {
         if (result == kBackEndSuccess)
           shared.headers = TextTable(std::move(collector->Table()), ports_.codePage);
       }});
  return runner_.Perform(call, std::move(process));
}

MailResult InternetBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  RequirePop(request);
  EngineRunner::Call call(runner_);
  login_.PreparePop(request);
  HeaderCollector collector({std::numeric_limits<std::size_t>::max(), true, "NATIVE"});
  auto process = NewProcess(request, asynch_operation::kNone);
  process.steps.push_back(
      {EngineStep::Adapter::Pop, "Failed to count the unread messages.",
       [&](smtppop& engine) { engine.BeginLoadMessageHeaders(Pop(request), {}, collector); },
       [&](std::int32_t) { count = static_cast<std::int32_t>(collector.Table().size()); }});
  return runner_.Perform(call, std::move(process));
}

MailResult InternetBackEnd::LoadMessage(MailRequest& request) {
  RequirePop(request);
  EngineRunner::Call call(runner_);
  login_.PreparePop(request);
  const auto collector = std::make_shared<MessageCollector>(
      ports_.files, ports_.codePage, SplitSettingsOf(request, ports_.files),
      MessageOptions{request.instance.headersInMessage != kFalse,
                     Bytes(request.instance.dateFormat)});
  auto process = NewProcess(request, asynch_operation::kLoadMessage);
  process.steps.push_back(
      {EngineStep::Adapter::Pop, "Failed to load the message.",
       [settings = Pop(request), number = CurrentNumber(request), collector](smtppop& engine) {
         engine.BeginLoadMessage(settings, number, *collector);
       },
       [this, &shared = request.shared, collector](std::int32_t result) {
         if (result == kBackEndSuccess) StoreMessage(shared, *collector, ports_.codePage);
       }});
  return runner_.Perform(call, std::move(process));
}

MailResult InternetBackEnd::DeleteMessage(MailRequest& request) {
  RequirePop(request);
  EngineRunner::Call call(runner_);
  login_.PreparePop(request);
  auto process = NewProcess(request, asynch_operation::kDeleteMessage);
  process.steps.push_back({EngineStep::Adapter::Pop, "Failed to delete the message.",
                           [settings = Pop(request), number = CurrentNumber(request)](
                               smtppop& engine) { engine.BeginDeleteMessage(settings, number); }});
  return runner_.Perform(call, std::move(process));
}

MailResult InternetBackEnd::MoveCopyMessage(MailRequest& request, const std::string&, bool) {
  RequirePop(request);
  throw ServerError(error_code::kNotSupported,
                    "Cannot move or copy a message with POP. (POPMoveMessage)");
}

MailResult InternetBackEnd::ResolveName(MailRequest& request, const std::string& name,
                                        bool withAddress, std::string& resolved) {
  RequireSmtp(request);
  EngineRunner::Call call(runner_);
  login_.PrepareSmtp(request);
  auto process = NewProcess(request, asynch_operation::kNone);
  process.steps.push_back(
      {EngineStep::Adapter::Smtp, "Failed to resolve the name.",
       [&](smtppop& engine) { engine.BeginResolveAddress(Smtp(request), Bytes(name)); },
       [&](std::int32_t) { resolved = Text(runner_.Engine().ResolvedAddress()); }});
  auto result = runner_.Perform(call, std::move(process));
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
