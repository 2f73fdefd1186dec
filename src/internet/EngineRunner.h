// Has the engine do what a call asks for: to its end while the client waits, or, with an object
// registered, step by step out of the event loop.
//
// One call at a time: the loop serves other calls while it waits, and those must not enter a
// session that is at work.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "internet/ProgressReporter.h"
#include "internet/smtppop.h"
#include "mail/AsynchNotifier.h"
#include "mail/InstanceState.h"
#include "mail/MailResult.h"
#include "ports/CodePage.h"
#include "ports/MessageBox.h"

namespace quillon {

// One engine operation, and what is done with its result.
struct EngineStep {
  enum class Adapter { Pop, Smtp };

  Adapter adapter;
  const char* context;  // what has failed when it fails
  std::function<void(smtppop&)> begin;
  std::function<void(std::int32_t result)> finish = [](std::int32_t) {};
};

// What a call has the engine do.
struct EngineProcess {
  std::int32_t operation = asynch_operation::kNone;  // none: the client waits in any case
  MailSystemId system = mail_system::kNone;
  bool errorDisplay = false;  // failures are shown in a box
  DisplayOptions display;
  std::deque<EngineStep> steps;  // one after the other, as long as they succeed
};

struct RunnerPorts {
  EventLoop& loop;
  Network& network;
  ComposerPorts composing;
  MessageBoxPort& messageBox;
  AsynchNotifier& notifier;
  ProgressDisplay& progress;
};

class EngineRunner {
 public:
  class Call;

  explicit EngineRunner(const RunnerPorts& ports);

  // Runs the process, or starts it when an object is registered; then the result is success, and
  // the object hears of its own. Throws ServerError 522 for what was aborted.
  MailResult Perform(Call& call, EngineProcess process);
  // One step, to its end.
  MailResult Run(const EngineProcess& process, const EngineStep& step);

  // What has been started for a client's object ends, without an event; else as Abort.
  void AsynchAbort();
  // Ends the running operation with 522. Callable from inside its wait.
  void Abort();
  // Ends what is running and leaves both servers, in `patience` milliseconds at most.
  void Shutdown(TickCount patience);

  smtppop& Engine();
  // What the table of a protocol says to a number: for both protocols that of the one that is at
  // work.
  std::string ErrorText(MailSystemId system, std::int32_t number) const;

 private:
  void BeginStep();
  void EndStep();
  void EndProcess(MailResult result);
  // Gives a number its text, or the words of the step that failed; shows it when error display is
  // on.
  MailResult ResultOf(const EngineProcess& process, const EngineStep& step, std::int32_t number);

  RunnerPorts ports_;
  ProgressReporter reporter_;
  std::unique_ptr<smtppop> engine_;         // made on first use
  std::shared_ptr<EngineProcess> process_;  // that goes on by itself
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
