#include "automation/StartNotice.h"

#include "platform/win32/Desktop.h"
#include "platform/win32/WideText.h"

namespace quillon {

namespace {

bool Write(HANDLE stream, const std::wstring& text) {
  if (stream == nullptr || stream == INVALID_HANDLE_VALUE) return false;
  DWORD done = 0;
  if (GetConsoleMode(stream, &done) != FALSE) {
    return WriteConsoleW(stream, text.data(), static_cast<DWORD>(text.size()), &done, nullptr) !=
           FALSE;
  }
  const std::string bytes = Utf8FromWide(text);
  return WriteFile(stream, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) != FALSE;
}

// A program with windows gets no console from the shell that starts it, but may use the shell's.
bool WriteToConsole(const std::wstring& text) {
  if (AttachConsole(ATTACH_PARENT_PROCESS) == FALSE) return false;
  const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING, 0, nullptr);
  const bool written = Write(console, text);
  if (console != INVALID_HANDLE_VALUE) CloseHandle(console);
  FreeConsole();
  return written;
}

void Tell(DWORD stream, const std::wstring& line, const std::wstring& text, UINT icon) {
  if (Write(GetStdHandle(stream), line) || WriteToConsole(line) || !HasDesktop()) return;
  MessageBoxW(nullptr, text.c_str(), L"Quillon", MB_OK | MB_SETFOREGROUND | icon);
}

}  // namespace

void Inform(const std::wstring& text) {
  Tell(STD_OUTPUT_HANDLE, text + L"\r\n", text, MB_ICONINFORMATION);
}

void Complain(const std::wstring& text) {
  Tell(STD_ERROR_HANDLE, L"quillon: " + text + L"\r\n", text, MB_ICONERROR);
}

std::wstring SystemText(DWORD error) {
  wchar_t text[256] = {};
  FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                 text, 256, nullptr);
  std::wstring line = text;
  line.resize(line.find_last_not_of(L" \r\n") + 1);
  return line;
}

}  // namespace quillon
