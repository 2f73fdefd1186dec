// The windows of these tests are real ones, on a desktop that nobody sees and that needs no
// display. A process gets its desktop when it starts, so the tests run in a second one.
#include <windows.h>
#include <gtest/gtest.h>
#include <string>

namespace {

constexpr wchar_t kSecondProcess[] = L"QUILLON_TESTS_SECOND_PROCESS";

std::wstring NameOf(HANDLE object) {
  wchar_t name[200] = {};
  GetUserObjectInformationW(object, UOI_NAME, name, sizeof name, nullptr);
  return name;
}

int RunOnUnseenDesktop() {
  const HWINSTA station = CreateWindowStationW(nullptr, 0, GENERIC_ALL, nullptr);
  if (station == nullptr || SetProcessWindowStation(station) == FALSE) return 1;
  // Programs that run at the same time share the station, and would find each other's windows.
  const std::wstring name = L"Tests" + std::to_wstring(GetCurrentProcessId());
  const HDESK desktop = CreateDesktopW(name.c_str(), nullptr, nullptr, 0, GENERIC_ALL, nullptr);
  if (desktop == nullptr) return 1;
  std::wstring place = NameOf(station) + L"\\" + name;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.lpDesktop = place.data();
  PROCESS_INFORMATION process{};
  std::wstring commandLine = GetCommandLineW();
  SetEnvironmentVariableW(kSecondProcess, L"1");
  if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                     &start, &process) == FALSE) {
    return 1;
  }
  DWORD status = 1;
  WaitForSingleObject(process.hProcess, INFINITE);
  GetExitCodeProcess(process.hProcess, &status);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return static_cast<int>(status);
}

}  // namespace

int main(int count, char** arguments) {
  if (GetEnvironmentVariableW(kSecondProcess, nullptr, 0) == 0) return RunOnUnseenDesktop();
  ::testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
