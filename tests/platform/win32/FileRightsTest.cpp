#include <windows.h>
#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>
#include <string>

#include "platform/win32/FileRights.h"
#include "platform/win32/WideText.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

class FileRightsTest : public ::testing::Test {
 protected:
  // Gives the directory the list that is written so (SDDL).
  void Given(const wchar_t* rights) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_NE(ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1,
                                                                   &descriptor, nullptr),
              FALSE);
    EXPECT_NE(SetFileSecurityW(path_.c_str(), DACL_SECURITY_INFORMATION, descriptor), FALSE);
    LocalFree(descriptor);
  }

  TempFolder folder_;
  const std::wstring path_ = WideFromUtf8(folder_.Path());
};

TEST_F(FileRightsTest, TheListTellsWhetherOthersMayChange) {
  Given(L"D:P(A;;GA;;;CO)(A;;GA;;;SY)(A;;GA;;;BA)(A;;GRGX;;;BU)");
  EXPECT_FALSE(OthersMayChange(path_));
  Given(L"D:P(A;;GA;;;SY)(A;;GA;;;WD)");
  EXPECT_TRUE(OthersMayChange(path_));
  EXPECT_TRUE(OthersMayChange(path_ + L"\\missing"));
}

}  // namespace
}  // namespace quillon::testing
