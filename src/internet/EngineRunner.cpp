#include "internet/EngineRunner.h"

#include <utility>

#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/InternetErrorText.h"
#include "mail/BackEnd.h"

namespace quillon {

namespace {

constexpr std::int32_t kUnknownError = 6;
constexpr std::int32_t kAborted = 522;

}  // namespace

EngineRunner::Call::Call(EngineRunner& owner) : owner_(&owner) {
  if (owner.ports_.notifier.InCallback()) throw ServerError(541);
  if (std::exchange(owner.busy_, true)) throw ServerError(540);
}

EngineRunner::EngineRunner(const RunnerPorts& ports)
    : ports_(ports), reporter_(ports.loop, ports.notifier, ports.progress) {}

smtppop& EngineRunner::Engine() {
  if (!engine_) {
    engine_ = std::make_unique<smtppop>(ports_.loop, ports_.network, ports_.composing, &reporter_);
  }
  return *engine_;
}

// With an object registered the operation goes on by itself, and its result is told to the object.
std::int32_t EngineRunner::Perform(Call& call, EngineProcess process) {
  reporter_.Begin(process.operation, process.display);
  auto result = kBackEndSuccess;
  try {
    if (process.operation != asynch_operation::kNone && ports_.notifier.Registered()) {
      process_ = std::make_shared<EngineProcess>(std::move(process));
      BeginStep();
      ports_.notifier.SetInProgress();
      call.LeaveRunning();
      return kBackEndSuccess;
    }
    for (const auto& step : process.steps) {
      result = Run(process, step);
      if (result != kBackEndSuccess) break;
    }
  } catch (...) {
    process_.reset();
    reporter_.End();
    throw;
  }
  reporter_.End();
  if (result == kAborted) throw ServerError(kAborted);
  return result;
}

std::int32_t EngineRunner::Run(const EngineProcess& process, const EngineStep& step) {
  step.begin(Engine());
  const auto result = Engine().Wait();
  step.finish(result);
  Note(process, step, result);
  return result;
}

void EngineRunner::BeginStep() {
  process_->steps.front().begin(Engine());
  Engine().WhenDone([this] { EndStep(); });
}

void EngineRunner::EndStep() {
  const auto process = process_;
  std::int32_t result = kUnknownError;
  std::string text;
  try {
    result = Engine().TakeResult();
    const auto step = std::move(process->steps.front());
    process->steps.pop_front();
    step.finish(result);
    Note(*process, step, result);
    const bool goesOn = result == kBackEndSuccess && !process->steps.empty();
    if (goesOn && process == process_) return BeginStep();
  } catch (const ServerError& error) {
    result = error.Code();
    text = error.Text();
  } catch (const std::exception& error) {
    result = kUnknownError;
    text = error.what();
  }
  if (process == process_) EndProcess(result, std::move(text));  // else aborted meanwhile
}

void EngineRunner::EndProcess(std::int32_t result, std::string text) {
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
void EngineRunner::AsynchAbort() {
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

void EngineRunner::Abort() {
  if (engine_) engine_->Abort();
}

void EngineRunner::Shutdown(TickCount patience) {
  if (process_ != nullptr) AsynchAbort();
  if (engine_) engine_->Shutdown(patience);
}

std::string EngineRunner::TableText(MailSystemId system, std::int32_t number) const {
  const bool popIsAtWork = engine_ && engine_->ProtocolSelector() == smtppop::Protocol::Pop;
  const bool pop =
      system == mail_system::kPop3 || (system == mail_system::kInternet && popIsAtWork);
  if (!pop) return SmtpErrorText(number);
  return PopErrorText(number,
                      engine_ ? ports_.composing.codePage.ToText(engine_->LastPOPErrorDescription())
                              : std::string());
}

std::string EngineRunner::ErrorText(MailSystemId system, std::int32_t number) const {
  auto text = TableText(system, number);
  return text.empty() && number == lastNumber_ ? lastContext_ : text;
}

void EngineRunner::Note(const EngineProcess& process, const EngineStep& step, std::int32_t result) {
  if (result == kBackEndSuccess) return;
  const bool pop = step.adapter == EngineStep::Adapter::Pop;
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

}  // namespace quillon
