// What happens to calls while a mail system of another maker works: a call that comes in is told to
// try again later, and of one that goes out and is told so the user hears.
#pragma once

#include <windows.h>
#include <objidl.h>

#include "automation/ComObject.h"
#include "mail/BusyGate.h"

namespace quillon {

class BusyFilter final : public ComObject<IMessageFilter> {
 public:
  // The filter of this thread from now on; `gate` must outlive the thread's calls.
  static void Install(const BusyGate& gate);

  DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD type, HTASK caller, DWORD ticks,
                                             LPINTERFACEINFO info) override;
  DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK callee, DWORD ticks, DWORD reason) override;
  DWORD STDMETHODCALLTYPE MessagePending(HTASK callee, DWORD ticks, DWORD type) override;

 private:
  explicit BusyFilter(const BusyGate& gate) : gate_(gate) {}

  const BusyGate& gate_;
};

}  // namespace quillon
