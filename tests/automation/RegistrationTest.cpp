#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "automation/Registration.h"
#include "platform/win32/RegistryKey.h"
#include "platform/win32/WideText.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

constexpr wchar_t kProgram[] = L"C:\\Program Files\\Quillon\\quillon.exe";

// The keys and texts below a key, as "path\name" -> data.
void Collect(HKEY root, const std::wstring& path, REGSAM view,
             std::map<std::wstring, std::wstring>& found) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return;
  found[path];
  wchar_t name[256];
  wchar_t data[512];
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    DWORD bytes = sizeof data;
    if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, reinterpret_cast<BYTE*>(data),
                      &bytes) != ERROR_SUCCESS) {
      break;
    }
    found[path + L"\\" + name] = data;
  }
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
      break;
    }
    Collect(root, path + L"\\" + name, view, found);
  }
  RegCloseKey(key);
}

class RegistrationTest : public ::testing::Test {
 protected:
  ~RegistrationTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, scratch_.c_str()); }

  std::map<std::wstring, std::wstring> Below() {
    std::map<std::wstring, std::wstring> found;
    Collect(HKEY_CURRENT_USER, place_.classes, 0, found);
    return found;
  }

  // Tests run at the same time, each in a process of its own.
  const std::wstring scratch_ = L"Software\\QuillonTest" + std::to_wstring(::GetCurrentProcessId());
  const Registration::Place place_{HKEY_CURRENT_USER, scratch_ + L"\\Classes"};
  const Registration registration_{kProgram, kPublicClasses};
};

TEST_F(RegistrationTest, TheRoadFromTheProgIdToTheProgramIsComplete) {
  ASSERT_EQ(registration_.Register(place_), ERROR_SUCCESS);
  const auto found = Below();
  const auto at = [&](const std::wstring& path) {
    const auto entry = found.find(place_.classes + L"\\" + path);
    return entry == found.end() ? L"(missing)" : entry->second;
  };
  EXPECT_EQ(at(L"QuillonInterface.Server\\CurVer\\"), L"QuillonInterface.Server.1");
  const std::wstring id = at(L"QuillonInterface.Server.1\\CLSID\\");
  EXPECT_EQ(at(L"QuillonInterface.Server\\CLSID\\"), id);
  const std::wstring server = L"CLSID\\" + id;
  EXPECT_EQ(at(server + L"\\LocalServer32\\"), L"\"C:\\Program Files\\Quillon\\quillon.exe\"");
  EXPECT_EQ(at(server + L"\\ProgID\\"), L"QuillonInterface.Server.1");
  EXPECT_EQ(at(server + L"\\VersionIndependentProgID\\"), L"QuillonInterface.Server");
  EXPECT_EQ(at(server + L"\\Programmable"), L"");
  EXPECT_EQ(at(L"AppID\\quillon.exe\\AppID"), at(server + L"\\AppID"));
  const std::wstring library = at(server + L"\\TypeLib\\");
  EXPECT_EQ(at(L"TypeLib\\" + library + L"\\1.0\\0\\win32\\"), kProgram);
}

TEST_F(RegistrationTest, ASecondClassHasARoadOfItsOwnToTheSameProgram) {
  PublicClass other = kServerClass;
  other.id.Data1 ^= 1;
  other.interfaceId.Data1 ^= 1;
  other.interfaceName = L"IOther";
  other.progId = L"QuillonInterface.Other";
  const std::array classes{kServerClass, other};
  const Registration both(kProgram, classes);
  ASSERT_EQ(both.Register(place_), ERROR_SUCCESS);
  auto found = Below();
  const auto at = [&](const std::wstring& path) { return found[place_.classes + L"\\" + path]; };
  const std::wstring id = at(L"QuillonInterface.Other\\CLSID\\");
  const std::wstring serverId = at(L"QuillonInterface.Server\\CLSID\\");
  EXPECT_NE(id, serverId);
  for (const wchar_t* value : {L"\\LocalServer32\\", L"\\AppID", L"\\TypeLib\\"}) {
    EXPECT_EQ(at(L"CLSID\\" + id + value), at(L"CLSID\\" + serverId + value));
    EXPECT_NE(at(L"CLSID\\" + id + value), L"");
  }
  EXPECT_EQ(both.Unregister(place_), ERROR_SUCCESS);
  EXPECT_LE(Below().size(), 1U);
}

TEST_F(RegistrationTest, NothingOfOursStaysBehindAndNothingElseGoes) {
  ASSERT_EQ(registration_.Register(place_), ERROR_SUCCESS);
  EXPECT_EQ(registration_.Register(place_), ERROR_SUCCESS);  // again: as an update does
  ASSERT_EQ(registration_.Unregister(place_), ERROR_SUCCESS);
  EXPECT_LE(Below().size(), 1U);
  EXPECT_EQ(registration_.Unregister(place_), ERROR_SUCCESS);

  // What somebody else keeps in the same keys.
  ASSERT_EQ(registration_.Register(place_), ERROR_SUCCESS);
  RegistryKey foreign;
  foreign.Create(HKEY_CURRENT_USER, place_.classes + L"\\AppID\\quillon.exe");
  foreign.SetText(L"Note", L"mine");
  foreign.Close();
  ASSERT_EQ(registration_.Unregister(place_), ERROR_SUCCESS);
  const auto left = Below();
  EXPECT_EQ(left.count(place_.classes + L"\\AppID\\quillon.exe\\Note"), 1U);
  EXPECT_EQ(left.size(), 4U);
}

TEST_F(RegistrationTest, AnotherCopyOfTheProgramKeepsItsRegistrationWhileItIsThere) {
  const TempFolder folder;
  const auto program = WideFromUtf8(folder.Path("other.exe"));
  ASSERT_NE(CopyFileW(L"C:\\windows\\system32\\kernel32.dll", program.c_str(), FALSE), FALSE);
  const Registration other(program, kPublicClasses);
  ASSERT_EQ(other.Register(place_), ERROR_SUCCESS);
  const auto before = Below();
  EXPECT_EQ(registration_.Unregister(place_), ERROR_SUCCESS);
  EXPECT_EQ(Below(), before);

  ASSERT_NE(DeleteFileW(program.c_str()), FALSE);
  EXPECT_EQ(registration_.Unregister(place_), ERROR_SUCCESS);
  EXPECT_LE(Below().size(), 1U);
}

// On a 64-bit Windows each view has a machine's software of its own; else there is one.
TEST_F(RegistrationTest, ProgramsOfBothKindsFindTheServerAndNeitherKeepsARest) {
  const Registration::Place machine{HKEY_LOCAL_MACHINE, place_.classes};
  BOOL emulated = FALSE;
  ASSERT_NE(IsWow64Process(GetCurrentProcess(), &emulated), FALSE);
  const auto below = [&](REGSAM view) {
    std::map<std::wstring, std::wstring> found;
    Collect(machine.root, machine.classes, view, found);
    return found;
  };
  ASSERT_EQ(registration_.Register(machine), ERROR_SUCCESS);
  const auto found32 = below(KEY_WOW64_32KEY);
  const auto found64 = below(KEY_WOW64_64KEY);
  EXPECT_GT(found32.size(), 40U);
  EXPECT_EQ(found32, found64);
  const auto isLibrary64 = [](const auto& entry) { return entry.first.ends_with(L"\\win64\\"); };
  EXPECT_EQ(std::ranges::count_if(found64, isLibrary64), emulated != FALSE ? 1 : 0);

  // A copy that only one kind of programs knows, as an earlier version left it, is there all the
  // same.
  if (emulated != FALSE) {
    const TempFolder folder;
    const auto program = WideFromUtf8(folder.Path("other.exe"));
    ASSERT_NE(CopyFileW(L"C:\\windows\\system32\\kernel32.dll", program.c_str(), FALSE), FALSE);
    ASSERT_EQ(registration_.Unregister(machine), ERROR_SUCCESS);
    ASSERT_EQ(Registration(program, kPublicClasses).Register(machine), ERROR_SUCCESS);
    HKEY software = nullptr;
    RegOpenKeyExW(machine.root, L"Software", 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, &software);
    const std::wstring own = scratch_.substr(scratch_.find(L'\\') + 1);
    EXPECT_EQ(RegDeleteTreeW(software, own.c_str()), ERROR_SUCCESS);
    RegCloseKey(software);
    EXPECT_EQ(registration_.Unregister(machine), ERROR_SUCCESS);
    EXPECT_EQ(below(KEY_WOW64_32KEY).size(), found32.size());
    ASSERT_NE(DeleteFileW(program.c_str()), FALSE);
  }
  EXPECT_EQ(registration_.Unregister(machine), ERROR_SUCCESS);
  EXPECT_LE(below(KEY_WOW64_32KEY).size(), 1U);
  EXPECT_LE(below(KEY_WOW64_64KEY).size(), 1U);
  for (const REGSAM view : {REGSAM{KEY_WOW64_32KEY}, REGSAM{KEY_WOW64_64KEY}}) {
    RegistryKey::DeleteEmpty(machine.root, machine.classes, L"Software", view);
  }
}

TEST_F(RegistrationTest, AFailedRegistrationTakesBackWhatItWrote) {
  // A link key of the registry cannot be created through: here a name that no key can have.
  const Registration impossible(L"C:\\" + std::wstring(300, L'x'), kPublicClasses);
  EXPECT_NE(impossible.Register(place_), ERROR_SUCCESS);
  EXPECT_LE(Below().size(), 1U);
}

}  // namespace
}  // namespace quillon::testing
