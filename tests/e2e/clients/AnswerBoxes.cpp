// Answers the message boxes of a server, as a user would: for each caption in turn it waits for a
// box that has it, prints "CAPTION: TEXT", presses its button and waits until it has gone. With
// /close in front of a caption it is any dialog, which is closed.
//
// Exit status 1 when one does not come or does not go.
#include <windows.h>
#include <cstdio>
#include <string>
#include <string_view>

#include "Watching.h"

namespace {

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr int kTextControl = 0xFFFF;  // of a message box

bool WaitUntilGone(HWND window, const std::string& caption) {
  if (WaitUntil([window] { return IsWindow(window) == FALSE; })) return true;
  std::printf("%s: does not go\n", caption.c_str());
  return false;
}

bool Close(const std::string& caption) {
  HWND dialog = nullptr;
  if (!WaitUntil(
          [&] { return (dialog = VisibleWindow(kDialogClass, nullptr, &caption)) != nullptr; })) {
    std::printf("%s: never shown\n", caption.c_str());
    return false;
  }
  PostMessageW(dialog, WM_CLOSE, 0, 0);
  return WaitUntilGone(dialog, caption);
}

bool Answer(const std::string& caption) {
  HWND box = nullptr;
  HWND button = nullptr;
  const bool shown = WaitUntil([&] {
    box = VisibleWindow(kDialogClass, nullptr, &caption);
    button = box == nullptr ? nullptr : FindWindowExW(box, nullptr, L"BUTTON", nullptr);
    return button != nullptr;
  });
  if (!shown) {
    std::printf("%s: never shown\n", caption.c_str());
    return false;
  }
  std::printf("%s: %s\n", caption.c_str(), TextOf(GetDlgItem(box, kTextControl)).c_str());
  PostMessageW(button, BM_CLICK, 0, 0);
  return WaitUntilGone(box, caption);
}

}  // namespace

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    const bool close = std::string_view(arguments[i]) == "/close" && i + 1 < count;
    if (!(close ? Close(arguments[++i]) : Answer(arguments[i]))) return 1;
  }
  return 0;
}
