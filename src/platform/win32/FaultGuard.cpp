#include "platform/win32/FaultGuard.h"

#include <windows.h>
#include <array>

namespace quillon {
namespace {

// A frame of structured exception handling as the 32-bit system has it: the list of them begins at
// fs:0, each in the stack frame of the function that made it.
struct Frame {
  Frame* next = nullptr;
  EXCEPTION_DISPOSITION(__cdecl* handler)(EXCEPTION_RECORD*, void*, CONTEXT*, void*) = nullptr;
  std::array<void*, 5> place = {};  // where the guarded call was made, for __builtin_longjmp
};

constexpr DWORD kUnwinding = 0x2 | 0x4;

EXCEPTION_DISPOSITION __cdecl GoBack(EXCEPTION_RECORD* record, void* frame, CONTEXT*, void*) {
  if ((record->ExceptionFlags & kUnwinding) != 0) return ExceptionContinueSearch;
  RtlUnwind(frame, nullptr, record, nullptr);
  // The registers may hold anything after the unwinding, but the list begins with the frame now.
  auto* const target = reinterpret_cast<Frame*>(__readfsdword(0));
  __builtin_longjmp(target->place.data(), 1);
}

DWORD AsNumber(Frame* frame) noexcept {
  return reinterpret_cast<DWORD>(frame);
}

}  // namespace

[[gnu::noinline]] bool RunGuarded(void (*function)(void*), void* context) noexcept {
  Frame frame;
  frame.next = reinterpret_cast<Frame*>(__readfsdword(0));
  frame.handler = &GoBack;
  volatile bool returned = false;
  if (__builtin_setjmp(frame.place.data()) == 0) {
    __writefsdword(0, AsNumber(&frame));
    function(context);
    returned = true;
  }
  __writefsdword(0, AsNumber(frame.next));
  return returned;
}

}  // namespace quillon
