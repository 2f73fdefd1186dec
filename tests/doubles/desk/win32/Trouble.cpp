#include "desk/win32/Trouble.h"

#include <windows.h>
#include <charconv>
#include <string>

#include "desk/Store.h"

namespace desk {
namespace {

void Pump(DWORD milliseconds) {
  const DWORD begun = GetTickCount();
  for (;;) {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    const DWORD passed = GetTickCount() - begun;
    if (passed >= milliseconds) return;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds - passed, QS_ALLINPUT);
  }
}

}  // namespace

void MakeTrouble(std::string_view word) {
  constexpr DWORD kNobodysException = 0xE0DE5C00;
  const std::size_t blank = word.find(' ');
  const std::string_view name = word.substr(0, blank);
  DWORD milliseconds = 0;
  if (blank != std::string_view::npos) {
    std::from_chars(word.data() + blank + 1, word.data() + word.size(), milliseconds);
  }
  if (name == "crash") {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
  } else if (name == "raise") {
    RaiseException(kNobodysException, 0, 0, nullptr);
  } else if (name == "pump") {
    Pump(milliseconds);
  } else if (name == "stop") {
    Sleep(milliseconds);
  } else {
    throw StoreError("the fault file has no such word: " + std::string(word));
  }
}

}  // namespace desk
