#include "platform/win32/Win32Workstation.h"

#include <windows.h>
#include <array>
#include <vector>

#include "platform/win32/ComPtr.h"
#include "platform/win32/LibrarySearch.h"
#include "platform/win32/WideText.h"

namespace quillon {

namespace {

ComPtr<IDispatch> CreateObject(const std::string& progId) {
  CLSID clsid;
  ComPtr<IDispatch> object;
  if (SUCCEEDED(CLSIDFromProgID(WideFromUtf8(progId).c_str(), &clsid))) {
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                     object.PutVoid());
  }
  return object;
}

// The first text of a version record's string table, whatever its language.
std::string VersionString(const std::vector<std::uint8_t>& record, const wchar_t* name) {
  struct Translation {
    WORD language;
    WORD codePage;
  };
  Translation* translation = nullptr;
  UINT length = 0;
  if (VerQueryValueW(record.data(), L"\\VarFileInfo\\Translation",
                     reinterpret_cast<void**>(&translation), &length) == FALSE ||
      length < sizeof(Translation)) {
    return {};
  }
  std::array<wchar_t, 128> path{};
  wsprintfW(path.data(), L"\\StringFileInfo\\%04x%04x\\%s", translation->language,
            translation->codePage, name);
  wchar_t* text = nullptr;
  if (VerQueryValueW(record.data(), path.data(), reinterpret_cast<void**>(&text), &length) ==
          FALSE ||
      length == 0) {
    return {};
  }
  return Utf8FromWide(std::wstring_view(text, wcsnlen(text, length)));
}

std::string FileVersion(const std::vector<std::uint8_t>& record) {
  VS_FIXEDFILEINFO* info = nullptr;
  UINT length = 0;
  if (VerQueryValueW(record.data(), L"\\", reinterpret_cast<void**>(&info), &length) == FALSE ||
      length < sizeof(*info)) {
    return {};
  }
  return std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
         std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
         std::to_string(HIWORD(info->dwFileVersionLS)) + "." +
         std::to_string(LOWORD(info->dwFileVersionLS));
}

std::string RegistryText(HKEY root, const std::string& key, const std::string& value) {
  const auto wideKey = WideFromUtf8(key);
  const auto wideValue = WideFromUtf8(value);
  DWORD bytes = 0;
  if (RegGetValueW(root, wideKey.c_str(), wideValue.c_str(), RRF_RT_REG_SZ, nullptr, nullptr,
                   &bytes) != ERROR_SUCCESS) {
    return {};
  }
  std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
  bytes = static_cast<DWORD>(text.size()) * DWORD{sizeof(wchar_t)};
  if (RegGetValueW(root, wideKey.c_str(), wideValue.c_str(), RRF_RT_REG_SZ, nullptr, text.data(),
                   &bytes) != ERROR_SUCCESS) {
    return {};
  }
  return Utf8FromWide(text.c_str());
}

SystemFamily FamilyOf(DWORD platform) {
  switch (platform) {
    case VER_PLATFORM_WIN32s:  // 32-bit programs on Windows 3.1
      return SystemFamily::Windows16;
    case VER_PLATFORM_WIN32_WINDOWS:
      return SystemFamily::Windows95;
    default:
      return SystemFamily::WindowsNt;
  }
}

}  // namespace

// GetVersionEx tells programs what their manifests say they know; this function tells what it is.
SystemVersion Win32Workstation::System() {
  using VersionType = LONG WINAPI(OSVERSIONINFOW*);
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  version.dwPlatformId = VER_PLATFORM_WIN32_NT;
  auto* const tell = reinterpret_cast<VersionType*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
  if (tell != nullptr) tell(&version);
  return {FamilyOf(version.dwPlatformId), std::to_string(version.dwMajorVersion) + "." +
                                              std::to_string(version.dwMinorVersion) + "." +
                                              std::to_string(version.dwBuildNumber)};
}

bool Win32Workstation::LibraryLoads(const std::string& name, const std::string& directory) {
  const LibraryDirectory place(WideFromUtf8(directory));
  const auto wideName = WideFromUtf8(name);
  const auto path = directory.empty() ? FindLibrary(wideName) : place.Find(wideName);
  if (path.empty()) return false;
  // With the directory of the library itself as the first one for what it needs.
  const HMODULE library = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (library == nullptr) return false;
  FreeLibrary(library);
  return true;
}

std::optional<LibraryInfo> Win32Workstation::DescribeLibrary(const std::string& name) {
  const auto path = FindLibrary(WideFromUtf8(name));
  if (path.empty()) return std::nullopt;
  DWORD ignored = 0;
  std::vector<std::uint8_t> record(GetFileVersionInfoSizeW(path.c_str(), &ignored));
  if (record.empty() || GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(record.size()),
                                            record.data()) == FALSE) {
    return LibraryInfo{};
  }
  return LibraryInfo{VersionString(record, L"CompanyName"), FileVersion(record)};
}

bool Win32Workstation::ObjectCreates(const std::string& progId) {
  return static_cast<bool>(CreateObject(progId));
}

std::string Win32Workstation::WindowsDirectory() {
  std::array<wchar_t, MAX_PATH> path{};
  return Utf8FromWide({path.data(), GetWindowsDirectoryW(path.data(), MAX_PATH)});
}

std::string Win32Workstation::SystemDirectory() {
  std::array<wchar_t, MAX_PATH> path{};
  return Utf8FromWide({path.data(), GetSystemDirectoryW(path.data(), MAX_PATH)});
}

std::string Win32Workstation::ProfileValue(const std::string& section, const std::string& key) {
  std::array<wchar_t, 1024> value{};
  const auto length = GetProfileStringW(WideFromUtf8(section).c_str(), WideFromUtf8(key).c_str(),
                                        L"", value.data(), static_cast<DWORD>(value.size()));
  return Utf8FromWide(std::wstring_view(value.data(), length));
}

std::string Win32Workstation::UserRegistryText(const std::string& key, const std::string& value) {
  return RegistryText(HKEY_CURRENT_USER, key, value);
}

std::string Win32Workstation::MachineRegistryText(const std::string& key,
                                                  const std::string& value) {
  return RegistryText(HKEY_LOCAL_MACHINE, key, value);
}

std::string Win32Workstation::EnvironmentText(const std::string& name) {
  const auto wideName = WideFromUtf8(name);
  std::wstring text(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
  if (text.empty()) return {};
  const auto length =
      GetEnvironmentVariableW(wideName.c_str(), text.data(), static_cast<DWORD>(text.size()));
  // Longer than before when somebody else has changed it meanwhile.
  return length < text.size() ? Utf8FromWide({text.data(), length}) : std::string();
}

}  // namespace quillon
