// What the clients share that look at the windows of a server, as a user would.
#pragma once

#include <windows.h>
#include <functional>
#include <string>

constexpr DWORD kPatience = 30000;  // milliseconds

inline bool WaitUntil(const std::function<bool()>& done) {
  for (const ULONGLONG deadline = GetTickCount64() + kPatience; GetTickCount64() < deadline;) {
    if (done()) return true;
    Sleep(10);
  }
  return false;
}

// Also of a control of another process, which GetWindowText does not ask.
inline std::string TextOf(HWND window) {
  wchar_t wide[200] = {};
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXT, 200, reinterpret_cast<LPARAM>(wide), SMTO_NORMAL,
                      kPatience, &length);
  char text[400] = {};
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text, sizeof text, nullptr, nullptr);
  return text;
}

// The first visible window of a class behind `after`, with that caption unless it is null.
inline HWND VisibleWindow(const wchar_t* className, HWND after, const std::string* caption) {
  HWND window = after;
  do {
    window = FindWindowExW(nullptr, window, className, nullptr);
  } while (window != nullptr && (IsWindowVisible(window) == FALSE ||
                                 (caption != nullptr && TextOf(window) != *caption)));
  return window;
}
