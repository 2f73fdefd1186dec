// An open key of the registry. Functions return Win32 error numbers. A `view` is KEY_WOW64_32KEY or
// KEY_WOW64_64KEY where both kinds of programs run, and 0 is the one of this program.
#pragma once

#include <windows.h>
#include <optional>
#include <string>

namespace quillon {

class RegistryKey {
 public:
  RegistryKey() = default;
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() { Close(); }

  // To read and change.
  LSTATUS Open(HKEY root, const std::wstring& path, REGSAM view = 0);
  LSTATUS Create(HKEY root, const std::wstring& path, REGSAM view = 0);
  void Close() noexcept;

  // A null name is the default value. No value when there is none or it is not a text.
  std::optional<std::wstring> Text(const wchar_t* name) const;
  LSTATUS SetText(const wchar_t* name, const std::wstring& text);
  LSTATUS DeleteValue(const wchar_t* name);

  // Deletes the key if it holds neither values nor keys, then its parents by the same rule, up to
  // but without `top`. That a key is not empty is no failure.
  static LSTATUS DeleteEmpty(HKEY root, std::wstring path, const std::wstring& top,
                             REGSAM view = 0);

 private:
  HKEY key_ = nullptr;
};

}  // namespace quillon
