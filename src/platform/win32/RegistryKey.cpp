#include "platform/win32/RegistryKey.h"

#include <utility>

namespace quillon {

LSTATUS RegistryKey::Open(HKEY root, const std::wstring& path, REGSAM view) {
  Close();
  return RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WRITE | view, &key_);
}

LSTATUS RegistryKey::Create(HKEY root, const std::wstring& path, REGSAM view) {
  Close();
  return RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE | view, nullptr,
                         &key_, nullptr);
}

void RegistryKey::Close() noexcept {
  if (const HKEY key = std::exchange(key_, nullptr)) RegCloseKey(key);
}

std::optional<std::wstring> RegistryKey::Text(const wchar_t* name) const {
  DWORD bytes = 0;
  if (RegGetValueW(key_, nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &bytes) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  std::wstring text(bytes / sizeof(wchar_t), L'\0');
  if (RegGetValueW(key_, nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) !=
      ERROR_SUCCESS) {
    return std::nullopt;
  }
  text.resize(bytes / sizeof(wchar_t) - 1);  // the NUL at its end
  return text;
}

LSTATUS RegistryKey::SetText(const wchar_t* name, const std::wstring& text) {
  const auto bytes = static_cast<DWORD>(text.size() + 1) * DWORD{sizeof(wchar_t)};
  return RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), bytes);
}

LSTATUS RegistryKey::DeleteValue(const wchar_t* name) {
  return RegDeleteValueW(key_, name);
}

LSTATUS RegistryKey::DeleteEmpty(HKEY root, std::wstring path, const std::wstring& top,
                                 REGSAM view) {
  while (path.size() > top.size()) {
    RegistryKey key;
    LSTATUS result = key.Open(root, path, view);
    if (result != ERROR_SUCCESS) return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
    DWORD keys = 0;
    DWORD values = 0;
    result = RegQueryInfoKeyW(key.key_, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                              nullptr, nullptr, nullptr, nullptr);
    if (result != ERROR_SUCCESS || keys != 0 || values != 0) return result;
    key.Close();
    result = RegDeleteKeyExW(root, path.c_str(), view, 0);
    if (result != ERROR_SUCCESS) return result;
    path.resize(path.find_last_of(L'\\'));
  }
  return ERROR_SUCCESS;
}

}  // namespace quillon
