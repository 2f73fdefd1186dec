#include "automation/BusyFilter.h"

namespace quillon {
namespace {

constexpr const wchar_t* kTitle = L"Mail System Busy";
constexpr const wchar_t* kText = L"The mail system is busy processing.  Please wait.";

constexpr DWORD kPatience = 10000;  // milliseconds until the user is asked
constexpr DWORD kRetrySoon = 100;   // milliseconds; less would mean at once
constexpr DWORD kGiveUp = static_cast<DWORD>(-1);

}  // namespace

void BusyFilter::Install(const BusyGate& gate) {
  const auto filter = ComPtr<IMessageFilter>::Attach(new BusyFilter(gate));
  ThrowIfFailed(CoRegisterMessageFilter(filter.Get(), nullptr));
}

DWORD BusyFilter::HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) {
  return static_cast<DWORD>(gate_.Shut() ? SERVERCALL_RETRYLATER : SERVERCALL_ISHANDLED);
}

DWORD BusyFilter::RetryRejectedCall(HTASK, DWORD ticks, DWORD reason) {
  if (reason != SERVERCALL_RETRYLATER) return kGiveUp;
  if (ticks < kPatience) return kRetrySoon;
  const int answer =
      MessageBoxW(nullptr, kText, kTitle, MB_RETRYCANCEL | MB_ICONWARNING | MB_SETFOREGROUND);
  return answer == IDRETRY ? kRetrySoon : kGiveUp;
}

DWORD BusyFilter::MessagePending(HTASK, DWORD, DWORD) {
  return PENDINGMSG_WAITDEFPROCESS;
}

}  // namespace quillon
