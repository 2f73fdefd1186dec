#include "internet/smtppop.h"

#include <algorithm>
#include <utility>

#include "internet/Address.h"
#include "internet/EncodedField.h"
#include "internet/Pause.h"
#include "net/WireText.h"

namespace quillon {

namespace {

// How long a message is worked on before the loop gets a turn, in milliseconds. A call of a client
// takes several turns to come through.
constexpr TickCount kTurn = 5;

// From this size on it is told that the files of a message are being encoded.
constexpr std::uint64_t kLongToEncode = 1024 * 1024;

bool IsSender(const SmtpSettings& settings) {
  const auto& other = settings.envelopeSender;
  return IsSenderAddress(settings.sender) &&
         (other.empty() || (IsWireSafe(other) && IsSenderAddress(other)));
}

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

// What the sender wants to hear of (RFC 3461, 4.1): 1 asks for failures, 2 and 3 for all.
std::string NotifyOf(const OutgoingMessage& message) {
  if (message.certify || message.deliveryReport >= 2) return "SUCCESS,FAILURE";
  return message.deliveryReport == 1 ? "FAILURE" : "";
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

// As far as there is an ASCII form; for the rest the server is asked whether it takes UTF-8.
void UseAscii(SmtpSettings& settings, Envelope& envelope) {
  settings.sender = WithAsciiDomain(settings.sender);
  for (auto& recipient : envelope.recipients) recipient = WithAsciiDomain(recipient);
  envelope.inUtf8 = !IsAscii(settings.sender) ||
                    !std::all_of(envelope.recipients.begin(), envelope.recipients.end(), IsAscii);
  if (envelope.inUtf8) settings.security.extensions = true;
}

bool CanBeOffered(const Envelope& envelope) {
  if (!envelope.override.empty()) return IsRecipientAddress(envelope.override);
  return std::all_of(envelope.recipients.begin(), envelope.recipients.end(), IsRecipientAddress);
}

// An operation that no session needs to take up.
Task<SessionResult> EndedWith(std::int32_t number) {
  co_return SessionResult{number, {}};
}

}  // namespace

smtppop::smtppop(EventLoop& loop, Network& network, const SecurityPorts& security,
                 const ComposerPorts& ports, SessionListener& listener)
    : loop_(loop),
      ports_(ports),
      listener_(listener),
      smtp_({loop, network, ports.clock, ports.log, listener, security}),
      pop_({loop, network, ports.clock, ports.log, listener, security}),
      leaving_([this] { OnLeft(); }),
      leaveTimer_(loop, [this] { OnLeft(); }) {}

Task<SessionResult> smtppop::OnSmtp(SmtpSettings settings, Task<SessionResult> operation) {
  co_await left_;
  protocol_ = Protocol::Smtp;
  if (!IsSender(settings)) {
    co_return SessionResult{internet_error::kInvalidSender, {}};
  }
  co_return co_await operation;
}

Task<SessionResult> smtppop::OnPop(Task<SessionResult> operation) {
  co_await left_;
  protocol_ = Protocol::Pop;
  co_return co_await operation;
}

Task<SessionResult> smtppop::LoginSMTP(const SmtpSettings& settings) {
  return OnSmtp(settings, smtp_.Login(settings));
}

Task<SessionResult> smtppop::LogoutSMTP() {
  co_await left_;
  protocol_ = Protocol::Smtp;
  smtp_.TakeLeave();
  co_return SessionResult{};
}

Task<SessionResult> smtppop::ResolveAddress(const SmtpSettings& settings, const std::string& name) {
  RequireWireSafe(name, "The name");
  return OnSmtp(settings, smtp_.Resolve(settings, name));
}

Task<SessionResult> smtppop::Send(SmtpSettings settings, OutgoingMessage message,
                                  const ComposerSettings& composing,
                                  const std::string& envelopeRecipient) {
  protocol_ = Protocol::Smtp;
  ports_.log.WriteDebug("--- Starting SMTP Send Method " + LogTime(ports_.clock.Now()) + " ---");
  smtp_.ForgetRefusedRecipients();
  settings.sender = BareAddress(message.from);
  if (!IsWireSafe(message.from) || !IsSender(settings)) {
    return EndedWith(internet_error::kInvalidSender);
  }
  Envelope envelope{FormatSMTPRecipients(message.whoTo, message.cc, message.bcc), envelopeRecipient,
                    NotifyOf(message)};
  if (message.encoder) UseAscii(settings, envelope);
  RequireSafeRecipients(message);
  RequireWireSafe(envelope.override, "The envelope recipient");
  if (envelope.recipients.empty() && envelope.override.empty()) {
    return EndedWith(internet_error::kNoRecipients);
  }
  if (!CanBeOffered(envelope)) return EndedWith(internet_error::kBadRecipient);
  return ComposeAndSend(std::move(settings), std::move(envelope),
                        std::make_unique<MessageComposer>(ports_, composing, std::move(message)));
}

Task<SessionResult> smtppop::ComposeAndSend(SmtpSettings settings, Envelope envelope,
                                            std::unique_ptr<MessageComposer> composer) {
  co_await left_;
  co_await Compose(*composer);
  const auto message = composer->Take();
  composer.reset();
  listener_.OnStatus("Sending headers...");
  co_return co_await smtp_.Send(std::move(settings), std::move(envelope), *message);
}

// What takes a while is done when nothing else is waiting for the loop. A timer sees to that, and
// that nothing is done while a client's object is being called: posted work would run there too,
// and keep the call from coming back.
Task<> smtppop::Compose(MessageComposer& composer) {
  std::uint64_t size = 0;
  auto turnEnd = loop_.Now() + kTurn;
  while (!composer.Step()) {
    if (loop_.Now() < turnEnd) continue;
    if (size == 0) {
      size = composer.ApproximateSize();
      if (size >= kLongToEncode) listener_.OnStatus("Encoding attachments...");
    }
    if (size >= kLongToEncode) listener_.OnProgress(0, size, 0);
    Pause turn(loop_, 0);
    co_await turn;
    turnEnd = loop_.Now() + kTurn;
  }
}

Task<SessionResult> smtppop::LoginPOP(PopSettings settings) {
  RequireSafeLogin(settings);
  return OnPop(pop_.Login(std::move(settings)));
}

Task<SessionResult> smtppop::LogoutPOP() {
  return OnPop(pop_.Logout());
}

Task<SessionResult> smtppop::LoadMessageHeaders(PopSettings settings, HeaderRequest request,
                                                HeaderCollector& headers) {
  RequireSafeLogin(settings);
  return OnPop(pop_.Headers(std::move(settings), request, headers));
}

Task<SessionResult> smtppop::LoadMessage(PopSettings settings, MessageKey key, MessageSink& message,
                                         std::string* identifier) {
  RequireSafeLogin(settings);
  return OnPop(pop_.Message(std::move(settings), std::move(key), message, identifier));
}

Task<SessionResult> smtppop::DeleteMessage(PopSettings settings, MessageKey key) {
  RequireSafeLogin(settings);
  return OnPop(pop_.Delete(std::move(settings), std::move(key)));
}

void smtppop::Shutdown(TickCount patience) {
  if (left_.IsOpen()) {  // else a Shutdown is at it whose loop has led here
    left_.Close();
    smtp_.TakeLeave();
    leaveTimer_.Start(patience);
    leaving_.Start(pop_.Logout());
  }
  loop_.RunUntil([this] { return left_.IsOpen(); }, kNoDeadline);
  if (!left_.IsOpen()) OnLeft();  // the program is being ended
}

// The server has answered, or has had its time.
void smtppop::OnLeft() {
  leaveTimer_.Stop();
  leaving_.Abort();
  left_.Open();
}

}  // namespace quillon
