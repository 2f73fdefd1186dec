#include "internet/EngineRunner.h"

#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/InternetErrorText.h"
#include "mail/BackEnd.h"

namespace quillon {

namespace {

constexpr std::int32_t kUnknownError = 6;

}  // namespace

EngineRunner::Call::Call(EngineRunner& owner) : owner_(&owner) {
  if (owner.ports_.notifier.InCallback()) throw ServerError(error_code::kInNotification);
  if (std::exchange(owner.busy_, true)) throw ServerError(error_code::kInProgress);
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
MailResult EngineRunner::Perform(Call& call, EngineProcess process) {
  reporter_.Begin(process.operation, process.display);
  MailResult result;
  try {
    if (process.operation != asynch_operation::kNone && ports_.notifier.Registered()) {
      process_ = std::make_shared<EngineProcess>(std::move(process));
      BeginStep();
      ports_.notifier.SetInProgress();
      call.LeaveRunning();
      return result;
    }
    for (const auto& step : process.steps) {
      result = Run(process, step);
      if (!result.Succeeded()) break;
    }
  } catch (...) {
    process_.reset();
    reporter_.End();
    throw;
  }
  reporter_.End();
  if (result.number == error_code::kUserAborted) throw ServerError(error_code::kUserAborted);
  return result;
}

MailResult EngineRunner::Run(const EngineProcess& process, const EngineStep& step) {
  step.begin(Engine());
  const auto number = Engine().Wait();
  step.finish(number);
  return ResultOf(process, step, number);
}

void EngineRunner::BeginStep() {
  process_->steps.front().begin(Engine());
  Engine().WhenDone([this] { EndStep(); });
}

void EngineRunner::EndStep() {
  const auto process = process_;
  MailResult result;
  try {
    const auto number = Engine().TakeResult();
    const auto step = std::move(process->steps.front());
    process->steps.pop_front();
    step.finish(number);
    result = ResultOf(*process, step, number);
    const bool goesOn = result.Succeeded() && !process->steps.empty();
    if (goesOn && process == process_) return BeginStep();
  } catch (const ServerError& error) {
    result = {error.Code(), error.Text()};
  } catch (const std::exception& error) {
    result = {kUnknownError, error.what()};
  }
  if (process == process_) EndProcess(std::move(result));  // else aborted meanwhile
}

void EngineRunner::EndProcess(MailResult result) {
  const auto process = std::move(process_);
  if (result.text.empty() && !result.Succeeded()) {
    result.text = ErrorText(process->system, result.number);
  }
  auto event = reporter_.Last();
  reporter_.End();
  busy_ = false;
  event.kind = asynch_kind::kEndOfProcess;
  event.result = result.number;
  event.tag = "END";
  if (!result.text.empty()) event.text = std::move(result.text);
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

std::string EngineRunner::ErrorText(MailSystemId system, std::int32_t number) const {
  const bool popIsAtWork = engine_ && engine_->ProtocolSelector() == smtppop::Protocol::Pop;
  const bool pop =
      system == mail_system::kPop3 || (system == mail_system::kInternet && popIsAtWork);
  if (!pop) return SmtpErrorText(number);
  return PopErrorText(number,
                      engine_ ? ports_.composing.codePage.ToText(engine_->LastPOPErrorDescription())
                              : std::string());
}

MailResult EngineRunner::ResultOf(const EngineProcess& process, const EngineStep& step,
                                  std::int32_t number) {
  if (number == kBackEndSuccess) return {};
  const bool pop = step.adapter == EngineStep::Adapter::Pop;
  // Codes 2 and 4 mean that there was no connection, whatever it was wanted for.
  const bool connected =
      number != SocketConnect::kNotConnected && number != SocketConnect::kNotStarted;
  const std::string context = connected ? step.context : pop ? kPopLoginFailed : kSmtpLoginFailed;
  auto text = ErrorText(process.system, number);
  if (process.errorDisplay) {
    ports_.messageBox.Show(pop ? "POP Mail Error" : "SMTP Mail Error",
                           TrimmedCopy(context + ": {" + std::to_string(number) + "} " + text),
                           MessageBoxPort::Icon::Critical);
  }
  if (text.empty()) text = context;
  return {number, std::move(text)};
}

}  // namespace quillon
