#include "internet/smtppop.h"

#include <utility>

#include "core/ErrorCode.h"
#include "internet/Address.h"
#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::int32_t kNoRecipients = 9;
constexpr std::int32_t kInvalidSender = 555;

// How long a message is worked on before the loop gets a turn, in milliseconds. A call of a client
// takes several turns to come through.
constexpr TickCount kTurn = 5;

// From this size on it is told that the files of a message are being encoded.
constexpr std::uint64_t kLongToEncode = 1024 * 1024;

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

struct smtppop::Composition {
  MessageComposer composer;
  SmtpSettings settings;
  Envelope envelope;
  std::uint64_t size = 0;  // about; 0 when it has not been looked for
};

smtppop::smtppop(EventLoop& loop, Network& network, const ComposerPorts& ports,
                 SessionListener* listener)
    : loop_(loop),
      ports_(ports),
      listener_(listener),
      smtp_({loop, network, ports.clock, ports.log, *this}),
      pop_({loop, network, ports.clock, ports.log, *this}),
      turn_(loop, [this] { Compose(); }) {}

smtppop::~smtppop() = default;

void smtppop::OnStatus(std::string_view text) {
  if (listener_ != nullptr) listener_->OnStatus(text);
}

void smtppop::OnProgress(std::uint64_t done, std::uint64_t total, std::uint32_t message) {
  if (listener_ != nullptr) listener_->OnProgress(done, total, message);
}

// What came while nobody waited is taken note of first: most of all, that a server has hung up.
void smtppop::Enter(Protocol protocol) {
  protocol_ = protocol;
  refusal_.reset();
  failure_ = nullptr;
  whenDone_.reset();
  loop_.RunPending();
}

bool smtppop::Done() const {
  if (refusal_ || failure_) return true;
  if (composition_) return false;
  return protocol_ == Protocol::Smtp ? smtp_.Done() : pop_.Done();
}

std::int32_t smtppop::TakeResult() {
  data_.reset();
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  if (refusal_) return *refusal_;
  return protocol_ == Protocol::Smtp ? smtp_.Result() : pop_.Result();
}

std::int32_t smtppop::Wait(TickCount deadline) {
  if (!Done()) loop_.RunUntil([this] { return Done(); }, deadline);
  if (!Done()) Abort();  // too late, or the program is being ended
  return TakeResult();
}

void smtppop::WhenDone(std::function<void()> call) {
  whenDone_.reset();
  if (call == nullptr) return;
  whenDone_ = std::make_shared<std::function<void()>>(std::move(call));
  if (Done()) CallBack();
}

// A later operation, or nobody waiting any more, takes the call back.
void smtppop::CallBack() {
  if (whenDone_ == nullptr) return;
  loop_.Post([this, waiting = std::weak_ptr(whenDone_)] {
    const auto call = waiting.lock();
    if (call == nullptr) return;
    whenDone_.reset();
    (*call)();
  });
}

void smtppop::BeginLoginSMTP(const SmtpSettings& settings) {
  Enter(Protocol::Smtp);
  if (!IsSenderAddress(settings.sender)) {
    refusal_ = kInvalidSender;
  } else {
    smtp_.BeginLogin(settings);
  }
}

void smtppop::BeginLogoutSMTP() {
  Enter(Protocol::Smtp);
  smtp_.BeginLogout();
}

void smtppop::BeginSend(SmtpSettings settings, OutgoingMessage message,
                        const ComposerSettings& composing, const std::string& envelopeRecipient) {
  Enter(Protocol::Smtp);
  ports_.log.WriteDebug("--- Starting SMTP Send Method " + LogTime(ports_.clock.Now()) + " ---");
  smtp_.ForgetRefusedRecipients();
  settings.sender = BareAddress(message.from);
  if (!IsWireSafe(message.from) || !IsSenderAddress(settings.sender)) {
    refusal_ = kInvalidSender;
    return;
  }
  Envelope envelope{FormatSMTPRecipients(message.whoTo, message.cc, message.bcc),
                    envelopeRecipient};
  RequireSafeRecipients(message);
  RequireWireSafe(envelope.override, "The envelope recipient");
  if (envelope.recipients.empty() && envelope.override.empty()) {
    refusal_ = kNoRecipients;
    return;
  }
  composition_.reset(new Composition{
      {ports_, composing, std::move(message)}, std::move(settings), std::move(envelope)});
  Compose();
}

// For a while; what is left after that is done when nothing else is waiting for the loop. A timer
// sees to that, and that nothing is done while a client's object is being called: posted work would
// run there too, and keep the call from coming back.
void smtppop::Compose() {
  const auto composition = composition_;
  const auto turnEnd = loop_.Now() + kTurn;
  try {
    do {
      if (composition->composer.Step()) return SendComposed();
    } while (loop_.Now() < turnEnd);
    if (composition->size == 0) {
      composition->size = composition->composer.ApproximateSize();
      if (composition->size >= kLongToEncode) OnStatus("Encoding attachments...");
    }
    if (composition->size >= kLongToEncode) OnProgress(0, composition->size, 0);
  } catch (...) {
    failure_ = std::current_exception();
    composition_.reset();
    return CallBack();
  }
  if (composition_) turn_.Start(0);
}

void smtppop::SendComposed() {
  const auto composition = std::move(composition_);
  data_ = composition->composer.Take();
  OnStatus("Sending headers...");
  smtp_.BeginSend(composition->settings, std::move(composition->envelope), *data_);
}

void smtppop::BeginResolveAddress(const SmtpSettings& settings, const std::string& name) {
  Enter(Protocol::Smtp);
  RequireWireSafe(name, "The name");
  if (!IsSenderAddress(settings.sender)) {
    refusal_ = kInvalidSender;
  } else {
    smtp_.BeginResolve(settings, name);
  }
}

void smtppop::BeginLoginPOP(const PopSettings& settings) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginLogin(settings);
}

void smtppop::BeginLogoutPOP() {
  Enter(Protocol::Pop);
  pop_.BeginLogout();
}

void smtppop::BeginLoadMessageHeaders(const PopSettings& settings, const HeaderRequest& request,
                                      HeaderCollector& headers) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginHeaders(settings, request, headers);
}

void smtppop::BeginLoadMessage(const PopSettings& settings, std::uint32_t number,
                               MessageSink& message) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginMessage(settings, number, message);
}

void smtppop::BeginDeleteMessage(const PopSettings& settings, std::uint32_t number) {
  RequireSafeLogin(settings);
  Enter(Protocol::Pop);
  pop_.BeginDelete(settings, number);
}

void smtppop::Abort() {
  if (composition_ || failure_) {
    turn_.Stop();
    composition_.reset();
    failure_ = nullptr;
    refusal_ = error_code::kUserAborted;
    CallBack();
  }
  smtp_.Abort();
  pop_.Abort();
}

void smtppop::Shutdown(TickCount patience) {
  Abort();
  const auto deadline = loop_.Now() + patience;
  smtp_.BeginLogout();
  pop_.BeginLogout();
  loop_.RunUntil([this] { return smtp_.Done() && pop_.Done(); }, deadline);
  Abort();
}

}  // namespace quillon
