#include "internet/EngineRunner.h"

#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/InternetErrorText.h"

namespace quillon {

EngineRunner::Call::Call(EngineRunner& owner) : owner_(&owner) {
  owner.RequireIdle();
  owner.busy_ = true;
}

void EngineRunner::RequireIdle() const {
  if (ports_.notifier.InCallback()) throw ServerError(error_code::kInNotification);
  if (busy_) throw ServerError(error_code::kInProgress);
}

// The end is told from the loop, not from inside the event that the work has waited for. An abort
// may come before.
EngineRunner::EngineRunner(const RunnerPorts& ports)
    : ports_(ports), reporter_(ports.loop, ports.notifier, ports.progress), work_([this] {
        if (started_ == nullptr) return;
        ports_.loop.Post([this, order = std::weak_ptr(started_)] {
          if (!order.expired()) EndStarted();
        });
      }) {}

smtppop& EngineRunner::Engine() {
  if (!engine_) {
    engine_ = std::make_unique<smtppop>(ports_.loop, ports_.network, ports_.security,
                                        ports_.composing, reporter_);
  }
  return *engine_;
}

MailResult EngineRunner::Perform(Call& call, WorkOrder order, Task<SessionResult> work) {
  reporter_.Begin(order.operation, order.display);
  if (order.operation != asynch_operation::kNone && ports_.notifier.Registered()) {
    started_ = std::make_shared<WorkOrder>(std::move(order));
    ports_.notifier.SetInProgress();
    call.LeaveRunning();
    work_.Start(std::move(work));
    return {};
  }
  work_.Start(std::move(work));
  return Wait(order);
}

MailResult EngineRunner::Wait(const WorkOrder& order) {
  const auto over = [&] {
    reporter_.End();
    if (order.whenOver) order.whenOver();
  };
  MailResult result;
  try {
    ports_.loop.RunUntil([this] { return !work_.Running(); }, kNoDeadline);
    work_.Abort();  // the program is being ended
    result = TakeResult(order);
  } catch (...) {
    work_.Abort();
    over();
    throw;
  }
  over();
  if (result.number == error_code::kUserAborted) throw ServerError(error_code::kUserAborted);
  return result;
}

MailResult EngineRunner::TakeResult(const WorkOrder& order) {
  if (work_.Aborted()) return ResultOf(order, {error_code::kUserAborted, {}});
  return ResultOf(order, work_.Take());
}

void EngineRunner::EndStarted() {
  const auto order = started_;
  MailResult result;
  try {
    result = TakeResult(*order);
  } catch (const ServerError& error) {
    result = {error.Code(), error.Text()};
    if (result.text.empty()) result.text = ErrorText(order->system, result.number);
  } catch (const std::exception&) {
    result = {0, std::string("Undetermined error in ") + order->member + " method."};
  }
  if (order != started_) return;  // aborted while a box was shown
  started_.reset();
  if (order->whenOver) order->whenOver();
  auto event = reporter_.Last();
  reporter_.End();
  busy_ = false;
  event.kind = asynch_kind::kEndOfProcess;
  event.result = result.number;
  event.tag = "END";
  if (auto text = WithDetail(result.text, result); !text.empty()) event.text = std::move(text);
  ports_.notifier.Post(event);
}

// The abort has events of its own; what is running ends without one.
void EngineRunner::AsynchAbort() {
  Abort();
  if (const auto order = std::exchange(started_, nullptr)) {
    if (order->whenOver) order->whenOver();
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

MailResult EngineRunner::ResultOf(const WorkOrder& order, const SessionResult& ended) {
  if (ended.number == internet_error::kSuccess) return {};
  const bool pop = Engine().ProtocolSelector() == smtppop::Protocol::Pop;
  // Codes 2 and 4 mean that there was no connection, whatever it was wanted for.
  const bool connected =
      ended.number != internet_error::kNotConnected && ended.number != internet_error::kNotStarted;
  const auto* const login = pop ? kPopLoginFailed : kSmtpLoginFailed;
  const std::string context = connected && order.context != nullptr ? order.context : login;
  MailResult result{ended.number, TableText(pop, ended),
                    ports_.composing.codePage.ToText(ended.detail)};
  result.tellsDetail = order.detailedErrors || IsSecurityError(ended.number);
  if (order.errorDisplay) {
    ports_.messageBox.Show(pop ? "POP Mail Error" : "SMTP Mail Error",
                           TrimmedCopy(context + ": {" + std::to_string(ended.number) + "} " +
                                       WithDetail(result.text, result)),
                           MessageBoxPort::Icon::Critical);
  }
  if (result.text.empty()) result.text = context;
  return result;
}

}  // namespace quillon
