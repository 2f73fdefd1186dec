#include <windows.h>
#include <gtest/gtest.h>
#include <string>

#include "platform/win32/LibrarySearch.h"
#include "platform/win32/WideText.h"
#include "platform/win32/Win32Workstation.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

constexpr char kName[] = "foreign.dll";

std::wstring CurrentDirectory() {
  wchar_t text[1000] = {};
  GetCurrentDirectoryW(1000, text);
  return text;
}

std::wstring SearchPathVariable() {
  std::wstring text(32767, L'\0');
  text.resize(GetEnvironmentVariableW(L"PATH", text.data(), 32767));
  return text;
}

// A library that can be loaded lies in the current directory, where the program was started.
class LibrarySearchTest : public ::testing::Test {
 protected:
  LibrarySearchTest() {
    wchar_t program[1000] = {};
    GetModuleFileNameW(nullptr, program, 1000);
    CopyFileW(program, WideFromUtf8(folder_.Path(kName)).c_str(), FALSE);
    SetCurrentDirectoryW(WideFromUtf8(folder_.Path()).c_str());
    here_ = CurrentDirectory();
    SearchLibrariesSafely();
  }
  ~LibrarySearchTest() override {
    SetEnvironmentVariableW(L"PATH", path_.c_str());
    SetCurrentDirectoryW(before_.c_str());
  }

  bool Loads(const std::string& directory = {}) {
    return workstation_.LibraryLoads(kName, directory);
  }

  TempFolder folder_;
  const std::wstring before_ = CurrentDirectory();
  const std::wstring path_ = SearchPathVariable();
  std::wstring here_;
  Win32Workstation workstation_;
};

TEST_F(LibrarySearchTest, TheCurrentDirectoryIsNoPlaceForLibraries) {
  EXPECT_FALSE(Loads());
  EXPECT_FALSE(Loads("."));
  EXPECT_FALSE(workstation_.DescribeLibrary(kName));
  EXPECT_EQ(LoadLibraryW(L"foreign.dll"), nullptr);  // as a library loads what it needs
  SetEnvironmentVariableW(L"PATH", (L".;;" + here_.substr(2) + L";" + path_).c_str());
  EXPECT_FALSE(Loads());
}

TEST_F(LibrarySearchTest, WhatTheWorkstationNamesIsFound) {
  EXPECT_TRUE(workstation_.DescribeLibrary("kernel32.dll"));
  SetCurrentDirectoryW(before_.c_str());
  EXPECT_TRUE(Loads(folder_.Path()));
  EXPECT_EQ(CurrentDirectory(), before_);
  EXPECT_FALSE(Loads());
  SetEnvironmentVariableW(L"PATH", (L"C:\\nowhere;" + here_).c_str());
  EXPECT_TRUE(Loads());
}

TEST_F(LibrarySearchTest, AMailProgramsDirectoryCountsForItsTime) {
  SetCurrentDirectoryW(before_.c_str());
  {
    const LibraryDirectory place(here_);
    EXPECT_EQ(CurrentDirectory(), here_);
    const HMODULE companion = LoadLibraryW(L"foreign.dll");
    EXPECT_NE(companion, nullptr);
    if (companion != nullptr) FreeLibrary(companion);
  }
  EXPECT_EQ(CurrentDirectory(), before_);
  EXPECT_EQ(LoadLibraryW(L"foreign.dll"), nullptr);
}

}  // namespace
}  // namespace quillon::testing
