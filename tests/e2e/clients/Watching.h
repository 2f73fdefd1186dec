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
inline std::wstring WideTextOf(HWND window) {
  DWORD_PTR length = 0;
  SendMessageTimeoutW(window, WM_GETTEXTLENGTH, 0, 0, SMTO_NORMAL, kPatience, &length);
  std::wstring text(length + 1, L'\0');
  SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                      SMTO_NORMAL, kPatience, &length);
  text.resize(length);
  return text;
}

inline std::string TextOf(HWND window) {
  const std::wstring wide = WideTextOf(window);
  std::string text(wide.size() * 3, '\0');
  text.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
                          static_cast<int>(text.size()), nullptr, nullptr)));
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
