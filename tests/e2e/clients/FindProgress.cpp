// Looks for the progress window of a server, as a user would see it.
//
//   FindProgress                 prints the caption of each one that is there now
//   FindProgress CAPTION         waits for it, for its bar to move and its time to go on, and
//   prints
//                                what stands in it
//   FindProgress CAPTION press   the same; then presses its button and waits until it has gone
//
// Exit status 1 when what it waits for does not happen.
#include <windows.h>
#include <commctrl.h>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "Watching.h"

namespace {

constexpr wchar_t kFrameClass[] = L"QuillonProgress";

HWND VisibleFrame(HWND after, const std::string* caption) {
  return VisibleWindow(kFrameClass, after, caption);
}

LRESULT Position(HWND bar) {
  return SendMessageW(bar, PBM_GETPOS, 0, 0);
}

void PrintControl(const char* kind, HWND control) {
  if (control != nullptr) std::printf("%s: %s\n", kind, TextOf(control).c_str());
}

// From the top.
std::vector<HWND> LinesOf(HWND frame) {
  std::vector<HWND> lines;
  HWND line = nullptr;
  while ((line = FindWindowExW(frame, line, L"STATIC", nullptr)) != nullptr) lines.push_back(line);
  return lines;
}

int Watch(const std::string& caption, bool press) {
  HWND frame = nullptr;
  if (!WaitUntil([&] { return (frame = VisibleFrame(nullptr, &caption)) != nullptr; })) {
    std::puts("never shown");
    return 1;
  }
  const HWND bar = FindWindowExW(frame, nullptr, PROGRESS_CLASSW, nullptr);
  const HWND button = FindWindowExW(frame, nullptr, L"BUTTON", nullptr);
  if (bar != nullptr && !WaitUntil([bar] { return Position(bar) > 0; })) {
    std::puts("the bar does not move");
    return 1;
  }
  const std::vector<HWND> lines = LinesOf(frame);
  if (!lines.empty()) {
    const std::string time = TextOf(lines.back());
    if (!WaitUntil([&] { return TextOf(lines.back()) != time; })) {
      std::puts("the time stands still");
      return 1;
    }
  }
  for (const HWND line : lines) PrintControl("text", line);
  if (bar != nullptr) std::printf("bar: %ld\n", static_cast<long>(Position(bar)));
  PrintControl("button", button);
  std::printf("active: %d\n", GetForegroundWindow() == frame ? 1 : 0);
  if (!press) return 0;
  PostMessageW(button, BM_CLICK, 0, 0);
  const bool gone = WaitUntil([frame] { return IsWindow(frame) == FALSE; });
  std::puts(gone ? "gone" : "still there");
  return gone ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count > 1) return Watch(arguments[1], count > 2 && std::string_view(arguments[2]) == "press");
  HWND frame = nullptr;
  while ((frame = VisibleFrame(frame, nullptr)) != nullptr) std::puts(TextOf(frame).c_str());
  return 0;
}
