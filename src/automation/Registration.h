// What the registry says of the server. One table of values is what is written, what is taken out
// again, and all there is. On a 64-bit Windows it stands there for 64-bit programs too, which see
// classes and interfaces of their own.
#pragma once

#include <windows.h>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "automation/PublicClass.h"

namespace quillon {

// One value below a "Software\Classes" key. A null name is the key's default value; `marker` keys
// exist without any value.
struct RegistryRow {
  std::wstring key;
  const wchar_t* name;
  std::wstring data;
  bool marker = false;
};

class Registration {
 public:
  // Where to register: below `root`, at `classes`.
  struct Place {
    HKEY root;
    std::wstring classes;
  };

  static Place PerMachine() { return {HKEY_LOCAL_MACHINE, L"Software\\Classes"}; }
  static Place PerUser() { return {HKEY_CURRENT_USER, L"Software\\Classes"}; }

  // `program` is the full path of the executable, which serves the classes: at least one, which
  // live longer than this object.
  Registration(const std::wstring& program, std::span<const PublicClass> classes);

  // Both return a Win32 error number. A failed registration takes back what it wrote.
  LSTATUS Register(const Place& place) const;

  // Takes out what Register writes, and the keys that are empty then. What another copy of the
  // program has registered stays while that copy is there, and what somebody else has added in any
  // case.
  LSTATUS Unregister(const Place& place) const;

 private:
  LSTATUS Write(const Place& place, REGSAM view) const;
  LSTATUS TakeOut(const Place& place) const;
  LSTATUS TakeOut(const Place& place, REGSAM view) const;
  std::optional<std::wstring> RegisteredCommand(const Place& place) const;

  std::span<const PublicClass> classes_;
  std::vector<RegistryRow> rows_;
  std::wstring serverKey_;
  std::wstring serverCommand_;
};

}  // namespace quillon
