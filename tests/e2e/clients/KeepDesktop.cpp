// Keeps the desktop of a Wine prefix: Wine takes it down a second after the last window has gone,
// and a program that starts just then gets no window at all. Says "kept" and stays until it is
// ended; exit status 1 when it came at such a moment itself.
#include <windows.h>
#include <cstdio>

int main() {
  const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      GetModuleHandleW(nullptr), nullptr);
  if (window == nullptr) return 1;
  std::puts("kept");
  std::fflush(stdout);
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  return 0;
}
