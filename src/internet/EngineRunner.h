// Has the engine do what a call asks for: to its end while the client waits, or, with an object
// registered, out of the event loop after the call has returned.
//
// One call at a time: the loop serves other calls while it waits, and those must not enter a
// session that is at work. The work of a call is stored and begun without a turn of the event loop
// between the two, so that no other call finds it half begun.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/Operation.h"
#include "internet/ProgressReporter.h"
#include "internet/smtppop.h"
#include "mail/AsynchNotifier.h"
#include "mail/InstanceState.h"
#include "mail/MailResult.h"
#include "ports/CodePage.h"
#include "ports/MessageBox.h"

namespace quillon {

// What a call has the engine do, beside the work itself.
struct WorkOrder {
  const char* member = "";                           // of the server
  std::int32_t operation = asynch_operation::kNone;  // none: the client waits in any case
  const char* context = nullptr;                     // what has failed when it fails; a login
  MailSystemId system = mail_system::kNone;
  bool errorDisplay = false;    // failures are shown in a box
  bool detailedErrors = false;  // and told with what the server said, if anything
  DisplayOptions display;
  std::function<void()> whenOver;  // however it ends
};

struct RunnerPorts {
  EventLoop& loop;
  Network& network;
  SecurityPorts security;
  ComposerPorts composing;
  MessageBoxPort& messageBox;
  AsynchNotifier& notifier;
  ProgressDisplay& progress;
};

class EngineRunner {
 public:
  class Call;

  explicit EngineRunner(const RunnerPorts& ports);

  // Throws as a Call would. The user may be asked between the two: while he thinks, it is other
  // calls' turn.
  void RequireIdle() const;

  // Runs the work, or starts it when an object is registered; then the result is success, and the
  // object hears of the work's own. Throws ServerError 522 for what was aborted.
  MailResult Perform(Call& call, WorkOrder order, Task<SessionResult> work);

  // What has been started for a client's object ends, without an event; else as Abort.
  void AsynchAbort();
  // Ends what is running with 522. Callable from inside its wait.
  void Abort();
  // Ends what is running and leaves both servers, in `patience` milliseconds at most.
  void Shutdown(TickCount patience);

  smtppop& Engine();
  // What the table of a protocol says to a number: for both protocols that of the one that is at
  // work.
  std::string ErrorText(MailSystemId system, std::int32_t number) const;

 private:
  MailResult Wait(const WorkOrder& order);
  // What has been started is done.
  void EndStarted();
  MailResult TakeResult(const WorkOrder& order);
  // The number with its text, or the words of what has failed; shown when error display is on.
  MailResult ResultOf(const WorkOrder& order, const SessionResult& ended);
  std::string TableText(bool pop, const SessionResult& ended) const;

  RunnerPorts ports_;
  ProgressReporter reporter_;
  std::unique_ptr<smtppop> engine_;     // made on first use
  Operation<SessionResult> work_;       // what is running
  std::shared_ptr<WorkOrder> started_;  // whose work goes on by itself
  bool busy_ = false;
};

// A call at work. Throws ServerError 541 inside a call of the client's object, 540 while another
// one is at work.
class EngineRunner::Call {
 public:
  explicit Call(EngineRunner& owner);
  ~Call() {
    if (owner_ != nullptr) owner_->busy_ = false;
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  friend class EngineRunner;

  // The work goes on when the call has returned; its end will free the engine.
  void LeaveRunning() { owner_ = nullptr; }

  EngineRunner* owner_;
};

}  // namespace quillon
