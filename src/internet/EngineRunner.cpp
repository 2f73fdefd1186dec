#include "internet/EngineRunner.h"

#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/InternetErrorText.h"

namespace quillon {

EngineRunner::Call::Call(EngineRunner& owner) : owner_(&owner) {
  if (owner.ports_.notifier.InCallback()) throw ServerError(error_code::kInNotification);
  if (std::exchange(owner.busy_, true)) throw ServerError(error_code::kInProgress);
}

// The end is told from the loop, not from inside the event that the work has waited for. An abort
// may come before.
EngineRunner::EngineRunner(const RunnerPorts& ports)
    : ports_(ports), reporter_(ports.loop, ports.notifier, ports.progress), work_([this] {
        if (process_ == nullptr) return;
        ports_.loop.Post([this, process = std::weak_ptr(process_)] {
          if (!process.expired()) EndProcess();
        });
      }) {}

smtppop& EngineRunner::Engine() {
  if (!engine_) {
    engine_ = std::make_unique<smtppop>(ports_.loop, ports_.network, ports_.composing, reporter_);
  }
  return *engine_;
}

MailResult EngineRunner::Perform(Call& call, EngineProcess process, Task<SessionResult> work) {
  reporter_.Begin(process.operation, process.display);
  if (process.operation != asynch_operation::kNone && ports_.notifier.Registered()) {
    process_ = std::make_shared<EngineProcess>(std::move(process));
    ports_.notifier.SetInProgress();
    call.LeaveRunning();
    work_.Start(std::move(work));
    return {};
  }
  work_.Start(std::move(work));
  return Wait(process);
}

MailResult EngineRunner::Wait(const EngineProcess& process) {
  const auto over = [&] {
    reporter_.End();
    if (process.whenOver) process.whenOver();
  };
  MailResult result;
  try {
    ports_.loop.RunUntil([this] { return !work_.Running(); }, kNoDeadline);
    work_.Abort();  // the program is being ended
    result = TakeResult(process);
  } catch (...) {
    work_.Abort();
    over();
    throw;
  }
  over();
  if (result.number == error_code::kUserAborted) throw ServerError(error_code::kUserAborted);
  return result;
}

MailResult EngineRunner::TakeResult(const EngineProcess& process) {
  if (work_.Aborted()) return ResultOf(process, {error_code::kUserAborted, {}});
  return ResultOf(process, work_.Take());
}

void EngineRunner::EndProcess() {
  const auto process = process_;
  MailResult result;
  try {
    result = TakeResult(*process);
  } catch (const ServerError& error) {
    result = {error.Code(), error.Text()};
    if (result.text.empty()) result.text = ErrorText(process->system, result.number);
  } catch (const std::exception&) {
    result = {0, std::string("Undetermined error in ") + process->member + " method."};
  }
  if (process != process_) return;  // aborted while a box was shown
  process_.reset();
  if (process->whenOver) process->whenOver();
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
  Abort();
  if (const auto process = std::exchange(process_, nullptr)) {
    if (process->whenOver) process->whenOver();
    reporter_.End();
    busy_ = false;
  }
}

void EngineRunner::Abort() {
  work_.Abort();
}

void EngineRunner::Shutdown(TickCount patience) {
  AsynchAbort();
  if (engine_) engine_->Shutdown(patience);
}

std::string EngineRunner::TableText(bool pop, const SessionResult& ended) const {
  if (!pop) return SmtpErrorText(ended.number);
  return PopErrorText(ended.number, ports_.composing.codePage.ToText(ended.words));
}

std::string EngineRunner::ErrorText(MailSystemId system, std::int32_t number) const {
  const bool popIsAtWork = engine_ && engine_->ProtocolSelector() == smtppop::Protocol::Pop;
  const bool pop =
      system == mail_system::kPop3 || (system == mail_system::kInternet && popIsAtWork);
  return TableText(pop, {number, engine_ ? engine_->LastPOPErrorDescription() : std::string()});
}

MailResult EngineRunner::ResultOf(const EngineProcess& process, const SessionResult& ended) {
  if (ended.number == internet_error::kSuccess) return {};
  const bool pop = Engine().ProtocolSelector() == smtppop::Protocol::Pop;
  // Codes 2 and 4 mean that there was no connection, whatever it was wanted for.
  const bool connected =
      ended.number != internet_error::kNotConnected && ended.number != internet_error::kNotStarted;
  const auto* const login = pop ? kPopLoginFailed : kSmtpLoginFailed;
  const std::string context = connected && process.context != nullptr ? process.context : login;
  auto text = TableText(pop, ended);
  if (process.errorDisplay) {
    ports_.messageBox.Show(
        pop ? "POP Mail Error" : "SMTP Mail Error",
        TrimmedCopy(context + ": {" + std::to_string(ended.number) + "} " + text),
        MessageBoxPort::Icon::Critical);
  }
  if (text.empty()) text = context;
  return {ended.number, std::move(text)};
}

}  // namespace quillon
