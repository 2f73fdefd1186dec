#include "automation/AdministratorConsole.h"

#include <windows.h>
#include <array>
#include <string_view>
#include <utility>

#include "automation/StartNotice.h"
#include "platform/win32/WideText.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestSecret = 8192;

std::string FirstLine(std::string_view text) {
  return std::string(text.substr(0, text.find_first_of("\r\n")));
}

// None when the input is no file and no pipe.
std::optional<std::string> ReadRedirected() {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  const DWORD type = ::GetFileType(input);
  if (type != FILE_TYPE_DISK && type != FILE_TYPE_PIPE) return std::nullopt;
  std::string text;
  std::array<char, 512> block;
  DWORD count = 0;
  while (text.find('\n') == std::string::npos && text.size() < kLongestSecret &&
         ::ReadFile(input, block.data(), block.size(), &count, nullptr) != FALSE && count > 0) {
    text.append(block.data(), count);
  }
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return FirstLine(text);
}

// What the console has is not shown while it is typed.
std::optional<std::string> ReadUnseen(HANDLE input, HANDLE output, const std::wstring& question) {
  DWORD mode = 0;
  if (::GetConsoleMode(input, &mode) == FALSE) return std::nullopt;
  DWORD count = 0;
  ::WriteConsoleW(output, question.data(), static_cast<DWORD>(question.size()), &count, nullptr);
  ::SetConsoleMode(input, (mode | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT) &
                              ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
  std::array<wchar_t, kLongestSecret> line;
  const bool read =
      ::ReadConsoleW(input, line.data(), line.size(), &count, nullptr) != FALSE && count > 0;
  ::SetConsoleMode(input, mode);
  DWORD written = 0;
  ::WriteConsoleW(output, L"\r\n", 2, &written, nullptr);
  if (!read) return std::nullopt;
  auto secret = FirstLine(Utf8FromWide(std::wstring_view(line.data(), count)));
  ::SecureZeroMemory(line.data(), sizeof line);
  return secret;
}

HANDLE OpenConsole(const wchar_t* name) {
  return ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       nullptr, OPEN_EXISTING, 0, nullptr);
}

}  // namespace

void AdministratorConsole::WriteLine(const std::string& text) {
  if (!waiting_.empty()) waiting_ += "\r\n";
  waiting_ += text;
}

void AdministratorConsole::Show() {
  if (!waiting_.empty()) Inform(WideFromUtf8(std::exchange(waiting_, {})));
}

std::optional<std::string> AdministratorConsole::ReadSecret(const std::string& question) {
  Show();
  if (auto secret = ReadRedirected()) return secret;
  if (::AttachConsole(ATTACH_PARENT_PROCESS) == FALSE) return std::nullopt;
  const HANDLE input = OpenConsole(L"CONIN$");
  const HANDLE output = OpenConsole(L"CONOUT$");
  auto secret = ReadUnseen(input, output, WideFromUtf8(question));
  for (const HANDLE handle : {input, output}) {
    if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
  }
  ::FreeConsole();
  return secret;
}

}  // namespace quillon
