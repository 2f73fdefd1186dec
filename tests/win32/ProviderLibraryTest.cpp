#include <windows.h>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/win32/ProviderLibrary.h"
#include "platform/win32/WideText.h"

namespace quillon::testing {
namespace {

std::wstring DoublesDirectory() {
  wchar_t program[1000] = {};
  GetModuleFileNameW(nullptr, program, 1000);
  const std::wstring path = program;
  return path.substr(0, path.find_last_of(L"\\/")) + L"\\doubles";
}

// badprovider.dll behaves as the environment says.
class ProviderLibraryTest : public ::testing::Test {
 protected:
  ~ProviderLibraryTest() override { Behave(""); }

  static void Behave(const std::string& how) {
    SetEnvironmentVariableA("QUILLON_BAD_PROVIDER", how.c_str());
  }
  static std::string Library() { return Utf8FromWide(DoublesDirectory() + L"\\badprovider.dll"); }

  std::int32_t List(std::uint32_t most) {
    headers.clear();
    return library.List({}, {}, [&](ProviderHeader header) {
      headers.push_back(std::move(header));
      return headers.size() < most;
    });
  }
  std::int32_t Read() {
    files = 0;
    ProviderMessage message;
    return library.Read({}, {}, message, [&](const std::string& name) {
      return ++files > 2000 ? std::string() : name;
    });
  }

  ProviderLibrary library;
  std::vector<ProviderHeader> headers;
  int files = 0;
};

TEST_F(ProviderLibraryTest, OneThatDoesNotFitIsNotTaken) {
  const std::map<std::string, std::int32_t> libraries{
      {"other version", provider::kOtherVersion}, {"no table", provider::kOtherVersion},
      {"tiny table", provider::kOtherVersion},    {"endless table", provider::kOtherVersion},
      {"no login", provider::kOtherVersion},      {"table nowhere", provider::kOtherVersion},
      {"fault in table", provider::kBroken}};
  for (const auto& [how, result] : libraries) {
    Behave(how);
    EXPECT_EQ(library.Load(Library()), result) << how;
    std::int32_t session = 0;
    EXPECT_EQ(library.Login({}, {}, session), provider::kMissing) << how;
  }
  EXPECT_EQ(library.Load("kernel32.dll"), provider::kOtherVersion);  // lacks the function
  EXPECT_EQ(library.Load("C:\\nowhere\\badprovider.dll"), provider::kMissing);
  Behave("");
  EXPECT_EQ(library.Load(Library()), provider::kSuccess);
  EXPECT_EQ(library.Load("the first one stays"), provider::kSuccess);
}

TEST_F(ProviderLibraryTest, APathInPartIsNotFollowed) {
  wchar_t before[1000] = {};
  GetCurrentDirectoryW(1000, before);
  SetCurrentDirectoryW(DoublesDirectory().c_str());
  for (const char* name : {"badprovider.dll", ".\\badprovider.dll", "../doubles/badprovider.dll"}) {
    EXPECT_EQ(library.Load(name), provider::kMissing) << name;
  }
  EXPECT_EQ(library.Load(Library().substr(2)), provider::kMissing);
  SetCurrentDirectoryW(before);
}

TEST_F(ProviderLibraryTest, WhatAnOlderLibraryLacksIsNotSupported) {
  Behave("short table");  // it ends in the middle of Read
  ASSERT_EQ(library.Load(Library()), provider::kSuccess);
  EXPECT_EQ(List(9), provider::kSuccess);
  EXPECT_EQ(Read(), provider::kNotSupported);
  EXPECT_EQ(library.ErrorText(3001), "");
  EXPECT_EQ(library.Delete({}, "id"), provider::kNotSupported);
  EXPECT_EQ(library.Logout({}), provider::kSuccess);
  EXPECT_FALSE(library.HasAddressBooks() || library.HasAddressWindow());
}

TEST_F(ProviderLibraryTest, WhatItPassesIsNotTrusted) {
  ASSERT_EQ(library.Load(Library()), provider::kSuccess);
  const std::map<std::string, std::int32_t> lists{{"", provider::kSuccess},
                                                  {"short record", provider::kSuccess},
                                                  {"no utf-8", provider::kSuccess},
                                                  {"no end", provider::kBroken},
                                                  {"fault between", provider::kBroken},
                                                  {"no size", provider::kBadData},
                                                  {"long record", provider::kBadData},
                                                  {"no id", provider::kBadData},
                                                  {"long id", provider::kBadData},
                                                  {"long text", provider::kBadData},
                                                  {"longer than it is", provider::kBadData},
                                                  {"text nowhere", provider::kBadData},
                                                  {"null text", provider::kBadData},
                                                  {"record nowhere", provider::kBadData},
                                                  {"null record", provider::kBadData}};
  for (const auto& [how, result] : lists) {
    Behave(how);
    EXPECT_EQ(List(3), result) << how;
    EXPECT_EQ(headers.size(), how == "no end" ? 3U : result == provider::kBadData ? 0U : 1U) << how;
    if (headers.empty()) continue;
    EXPECT_EQ(headers[0].from.name, how == "short record" ? "" : "ann") << how;
    EXPECT_EQ(headers[0].subject, how == "no utf-8" ? "a\xEF\xBF\xBD\xEF\xBF\xBDz" : "subject");
  }
  const std::map<std::string, std::int32_t> readings{{"", provider::kSuccess},
                                                     {"no message", provider::kBadData},
                                                     {"many recipients", provider::kBadData},
                                                     {"recipients nowhere", provider::kBadData},
                                                     {"name nowhere", provider::kBadData},
                                                     {"path nowhere", provider::kBroken},
                                                     {"files without end", provider::kBroken}};
  for (const auto& [how, result] : readings) {
    Behave(how);
    EXPECT_EQ(Read(), result) << how;
  }
}

TEST_F(ProviderLibraryTest, NorIsWhatItPassesOfAddressBooks) {
  ASSERT_EQ(library.Load(Library()), provider::kSuccess);
  const struct {
    const char* how;
    std::int32_t books;
    std::int32_t entries;
    std::int32_t choice;
  } kCases[] = {
      {"", provider::kSuccess, provider::kSuccess, provider::kSuccess},
      {"short record", provider::kSuccess, provider::kSuccess, provider::kSuccess},
      {"no end", provider::kBroken, provider::kBroken, provider::kSuccess},
      {"nameless book", provider::kBadData, provider::kSuccess, provider::kSuccess},
      {"book nowhere", provider::kBadData, provider::kSuccess, provider::kSuccess},
      {"text nowhere", provider::kSuccess, provider::kBadData, provider::kSuccess},
      {"record nowhere", provider::kSuccess, provider::kBadData, provider::kBadData},
      {"long text", provider::kSuccess, provider::kSuccess, provider::kBadData},
      {"cancelled", provider::kSuccess, provider::kSuccess, provider::kCancelled},
  };
  for (const auto& test : kCases) {
    Behave(test.how);
    std::vector<std::string> names;
    EXPECT_EQ(library.Books({}, names), test.books) << test.how;
    std::vector<ProviderEntry> entries;
    EXPECT_EQ(library.Entries({}, {"book", 0, 3}, entries), test.entries) << test.how;
    if (test.entries == provider::kSuccess) {
      ASSERT_EQ(entries.size(), 1U) << test.how;
      EXPECT_EQ(entries[0].address, std::string(test.how) == "short record" ? "" : "address");
    }
    std::vector<ProviderParty> parties{{provider::kCc, "before", {}}};
    EXPECT_EQ(library.ChooseAddresses({}, parties), test.choice) << test.how;
    EXPECT_EQ(parties.at(0).name, test.choice == provider::kSuccess ? "ann" : "before") << test.how;
  }
}

TEST_F(ProviderLibraryTest, AFaultEndsTheCallAndNotTheProcess) {
  ASSERT_EQ(library.Load(Library()), provider::kSuccess);
  std::int32_t session = 0;
  for (const char* how : {"fault", "raise"}) {
    Behave(how);
    EXPECT_EQ(library.Login({}, {}, session), provider::kBroken) << how;
  }
  EXPECT_EQ(library.ErrorText(3001), "text");
  Behave("no session");
  EXPECT_EQ(library.Login({}, {}, session), provider::kBadData);
  Behave("text nowhere");
  EXPECT_EQ(library.ErrorText(3001), "");
  Behave("");
  EXPECT_EQ(library.Login({}, {}, session), provider::kSuccess);
  EXPECT_EQ(library.ErrorText(3001), "text");
}

TEST_F(ProviderLibraryTest, WhatTheCallerThrowsComesOutOfTheCall) {
  ASSERT_EQ(library.Load(Library()), provider::kSuccess);
  const auto throws = [](const ProviderHeader&) -> bool { throw std::runtime_error("own"); };
  EXPECT_THROW(library.List({}, {}, throws), std::runtime_error);
  EXPECT_EQ(List(1), provider::kSuccess);
}

}  // namespace
}  // namespace quillon::testing
