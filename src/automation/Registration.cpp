#include "automation/Registration.h"

#include <algorithm>
#include <objbase.h>
#include <utility>

#include "platform/win32/RegistryKey.h"
#include "quillon_h.h"

namespace quillon {
namespace {

constexpr wchar_t kProgramText[] = L"Quillon mail server";
constexpr wchar_t kVersion[] = L"1.0";
constexpr wchar_t kAppId[] = L"{E00787D4-7369-4CCF-A08E-F51FEA0A98E8}";
// The system's marshaller for interfaces that a type library describes.
constexpr wchar_t kTypeLibraryMarshaller[] = L"{00020424-0000-0000-C000-000000000046}";

std::wstring TextOf(REFGUID guid) {
  wchar_t text[40];
  StringFromGUID2(guid, text, 40);
  return text;
}

// The program, which is one for all its classes.
void AddProgram(std::vector<RegistryRow>& rows, const std::wstring& executable) {
  rows.insert(rows.end(), {
                              {std::wstring(L"AppID\\") + kAppId, nullptr, kProgramText},
                              {L"AppID\\" + executable, L"AppID", kAppId},
                          });
}

std::wstring ServerKey(const PublicClass& described) {
  return L"CLSID\\" + TextOf(described.id) + L"\\LocalServer32";
}

// A class, its ProgIDs and the process that serves it.
void AddClass(std::vector<RegistryRow>& rows, const PublicClass& described,
              const std::wstring& command) {
  const std::wstring id = TextOf(described.id);
  const std::wstring classKey = L"CLSID\\" + id;
  const std::wstring progId = described.progId;
  const std::wstring versioned = progId + L".1";
  rows.insert(rows.end(), {
                              {classKey, nullptr, described.text},
                              {classKey, L"AppID", kAppId},
                              {ServerKey(described), nullptr, command},
                              {classKey + L"\\ProgID", nullptr, versioned},
                              {classKey + L"\\VersionIndependentProgID", nullptr, progId},
                              {classKey + L"\\TypeLib", nullptr, TextOf(LIBID_Quillon)},
                              {classKey + L"\\Version", nullptr, kVersion},
                              {classKey + L"\\Programmable", nullptr, {}, true},
                              {progId, nullptr, described.text},
                              {progId + L"\\CLSID", nullptr, id},
                              {progId + L"\\CurVer", nullptr, versioned},
                              {versioned, nullptr, described.text},
                              {versioned + L"\\CLSID", nullptr, id},
                          });
}

void AddInterface(std::vector<RegistryRow>& rows, REFGUID guid, const wchar_t* name) {
  const std::wstring key = L"Interface\\" + TextOf(guid);
  rows.insert(rows.end(), {
                              {key, nullptr, name},
                              {key + L"\\ProxyStubClsid32", nullptr, kTypeLibraryMarshaller},
                              {key + L"\\TypeLib", nullptr, TextOf(LIBID_Quillon)},
                              {key + L"\\TypeLib", L"Version", kVersion},
                          });
}

// The views of the registry: of the two on a 64-bit Windows each program sees the one of its kind.
// Most keys are the same in both, but not those of classes and interfaces.
std::span<const REGSAM> Views() {
  static constexpr REGSAM kBoth[] = {KEY_WOW64_32KEY, KEY_WOW64_64KEY};
  static constexpr REGSAM kOnly[] = {0};
  static const bool emulated = [] {
    BOOL is = FALSE;
    return IsWow64Process(GetCurrentProcess(), &is) != FALSE && is != FALSE;
  }();
  if (emulated) return kBoth;
  return kOnly;
}

void AddTypeLibrary(std::vector<RegistryRow>& rows, const std::wstring& program,
                    const std::wstring& directory) {
  const std::wstring key = L"TypeLib\\" + TextOf(LIBID_Quillon) + L"\\" + kVersion;
  rows.insert(rows.end(), {
                              {key, nullptr, L"Quillon 1.0 Type Library"},
                              {key + L"\\0\\win32", nullptr, program},
                              {key + L"\\FLAGS", nullptr, L"0"},
                              {key + L"\\HELPDIR", nullptr, directory},
                          });
  if (Views().size() > 1) rows.push_back({key + L"\\0\\win64", nullptr, program});
}

// What stands between the quotes of a LocalServer32 command.
std::wstring ProgramOf(const std::wstring& command) {
  if (!command.starts_with(L'"')) return command;
  return command.substr(1, command.find(L'"', 1) - 1);
}

// Not merely out of reach, as on a server that does not answer.
bool IsGone(const std::wstring& file) {
  if (file.empty() || GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace

Registration::Registration(const std::wstring& program, std::span<const PublicClass> classes)
    : classes_(classes),
      serverKey_(ServerKey(classes.front())),
      serverCommand_(L"\"" + program + L"\"") {
  const std::size_t nameStart = program.find_last_of(L'\\') + 1;
  const std::wstring directory = program.substr(0, nameStart == 0 ? 0 : nameStart - 1);
  AddTypeLibrary(rows_, program, directory);
  AddInterface(rows_, __uuidof(IItems), L"IItems");
  AddProgram(rows_, program.substr(nameStart));
  for (const PublicClass& described : classes) {
    AddInterface(rows_, described.interfaceId, described.interfaceName);
    AddClass(rows_, described, serverCommand_);
  }
}

LSTATUS Registration::Register(const Place& place) const {
  for (const REGSAM view : Views()) {
    const LSTATUS result = Write(place, view);
    if (result != ERROR_SUCCESS) {
      Unregister(place);
      return result;
    }
  }
  return ERROR_SUCCESS;
}

LSTATUS Registration::Unregister(const Place& place) const {
  const auto command = RegisteredCommand(place).value_or(serverCommand_);
  if (command == serverCommand_) return TakeOut(place);
  const auto program = ProgramOf(command);
  return IsGone(program) ? Registration(program, classes_).TakeOut(place) : ERROR_SUCCESS;
}

LSTATUS Registration::Write(const Place& place, REGSAM view) const {
  for (const RegistryRow& row : rows_) {
    RegistryKey key;
    LSTATUS result = key.Create(place.root, place.classes + L"\\" + row.key, view);
    if (result == ERROR_SUCCESS && !row.marker) result = key.SetText(row.name, row.data);
    if (result != ERROR_SUCCESS) return result;
  }
  return ERROR_SUCCESS;
}

// In whichever view: a copy that knew of one only is there all the same.
std::optional<std::wstring> Registration::RegisteredCommand(const Place& place) const {
  for (const REGSAM view : Views()) {
    RegistryKey server;
    if (server.Open(place.root, place.classes + L"\\" + serverKey_, view) == ERROR_SUCCESS) {
      return server.Text(nullptr).value_or(L"");
    }
  }
  return std::nullopt;
}

LSTATUS Registration::TakeOut(const Place& place) const {
  LSTATUS outcome = ERROR_SUCCESS;
  for (const REGSAM view : Views()) {
    const LSTATUS result = TakeOut(place, view);
    if (outcome == ERROR_SUCCESS) outcome = result;
  }
  return outcome;
}

LSTATUS Registration::TakeOut(const Place& place, REGSAM view) const {
  LSTATUS outcome = ERROR_SUCCESS;
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
    const std::wstring path = place.classes + L"\\" + row->key;
    RegistryKey key;
    LSTATUS result = key.Open(place.root, path, view);
    if (result == ERROR_FILE_NOT_FOUND) continue;
    if (result == ERROR_SUCCESS && !row->marker && key.Text(row->name) == row->data) {
      result = key.DeleteValue(row->name);
    }
    key.Close();
    if (result == ERROR_SUCCESS) {
      result = RegistryKey::DeleteEmpty(place.root, path, place.classes, view);
    }
    if (outcome == ERROR_SUCCESS) outcome = result;
  }
  return outcome;
}

}  // namespace quillon
