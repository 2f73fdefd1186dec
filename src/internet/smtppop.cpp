#include "internet/smtppop.h"

#include <utility>

#include "internet/Address.h"
#include "internet/WireText.h"

namespace quillon {

namespace {

constexpr std::int32_t kNoRecipients = 9;
constexpr std::int32_t kInvalidSender = 555;

void RequireSafeLogin(const PopSettings& settings) {
  RequireWireSafe(settings.loginName, "The login name");
  RequireWireSafe(settings.password, "The password");
}

// The whole entries: what stands around an address could hide another one.
void RequireSafeRecipients(const OutgoingMessage& message) {
  for (const auto* list : {&message.whoTo, &message.cc, &message.bcc}) {
    for (const auto& recipient : *list) RequireWireSafe(recipient, "A recipient");
  }
}

}  // namespace

smtppop::smtppop(EventLoop& loop, Network& network, const ComposerPorts& ports)
    : loop_(loop),
      ports_(ports),
      smtp_({loop, network, ports.clock, ports.log, *this}),
      pop_({loop, network, ports.clock, ports.log, *this}) {}

// What came while nobody waited is taken note of first: most of all, that a server has hung up.
void smtppop::Enter(Protocol protocol) {
  protocol_ = protocol;
  loop_.RunPending();
}

template <typename Session>
std::int32_t smtppop::WaitFor(Session& session, TickCount deadline) {
  loop_.RunUntil([&session] { return session.Done(); }, deadline);
  session.Abort();  // too late, or the program is being ended
  return session.Result();
}

std::int32_t smtppop::LoginSMTP(const SmtpSettings& settings) {
  Enter(Protocol::Smtp);
  if (!IsSenderAddress(settings.sender)) return kInvalidSender;
  smtp_.BeginLogin(settings);
  return WaitFor(smtp_);
}

std::int32_t smtppop::LogoutSMTP() {
  Enter(Protocol::Smtp);
  smtp_.BeginLogout();
  return WaitFor(smtp_);
}

std::int32_t smtppop::Send(SmtpSettings settings, OutgoingMessage message,
                           const ComposerSettings& composing,
                           const std::string& envelopeRecipient) {
  Enter(Protocol::Smtp);
  ports_.log.WriteDebug("--- Starting SMTP Send Method " + LogTime(ports_.clock.Now()) + " ---");
  smtp_.ForgetRefusedRecipients();
  settings.sender = BareAddress(message.from);
  if (!IsWireSafe(message.from) || !IsSenderAddress(settings.sender)) return kInvalidSender;
  Envelope envelope{FormatSMTPRecipients(message.whoTo, message.cc, message.bcc),
                    envelopeRecipient};
  RequireSafeRecipients(message);
  RequireWireSafe(envelope.override, "The envelope recipient");
  if (envelope.recipients.empty() && envelope.override.empty()) return kNoRecipients;
  const auto data = ComposeMessage(ports_, composing, std::move(message));
  OnStatus("Sending headers...");
  smtp_.BeginSend(settings, std::move(envelope), *data);
  return WaitFor(smtp_);
}

std::int32_t smtppop::ResolveAddress(const SmtpSettings& settings, const std::string& name,
                                     std::string& resolved) {
  Enter(Protocol::Smtp);
  RequireWireSafe(name, "The name");
  if (!IsSenderAddress(settings.sender)) return kInvalidSender;
  smtp_.BeginResolve(settings, name);
  const auto result = WaitFor(smtp_);
  resolved = smtp_.Resolved();
  return result;
}

std::int32_t smtppop::LoginPOP(const PopSettings& settings) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginLogin(settings);
  return WaitFor(pop_);
}

std::int32_t smtppop::LogoutPOP() {
  Enter(Protocol::Pop);
  pop_.BeginLogout();
  return WaitFor(pop_);
}

std::int32_t smtppop::LoadMessageHeaders(const PopSettings& settings, const HeaderRequest& request,
                                         HeaderCollector& headers) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginHeaders(settings, request, headers);
  return WaitFor(pop_);
}

std::int32_t smtppop::LoadMessage(const PopSettings& settings, std::uint32_t number,
                                  MessageSink& message) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginMessage(settings, number, message);
  return WaitFor(pop_);
}

std::int32_t smtppop::DeleteMessage(const PopSettings& settings, std::uint32_t number) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginDelete(settings, number);
  return WaitFor(pop_);
}

void smtppop::Abort() {
  smtp_.Abort();
  pop_.Abort();
}

void smtppop::Shutdown(TickCount patience) {
  Abort();
  const auto deadline = loop_.Now() + patience;
  smtp_.BeginLogout();
  pop_.BeginLogout();
  WaitFor(smtp_, deadline);
  WaitFor(pop_, deadline);
}

}  // namespace quillon
