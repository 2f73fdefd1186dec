#include <windows.h>
#include <cstdint>
#include <gtest/gtest.h>
#include <sddl.h>
#include <string>
#include <vector>

#include "platform/win32/ComSecurity.h"
#include "platform/win32/LocalMemory.h"
#include "platform/win32/WideText.h"

namespace quillon::testing {
namespace {

constexpr DWORD kExecute = 1;
constexpr DWORD kExecuteHere = 2;
constexpr DWORD kExecuteFromElsewhere = 4;
constexpr DWORD kActivateHere = 8;
constexpr DWORD kActivateFromElsewhere = 16;

// Whether the account of this process has the right, as the system decides it.
bool Allows(std::vector<std::uint8_t> descriptor, DWORD right) {
  HANDLE token = nullptr;
  EXPECT_NE(ImpersonateSelf(SecurityImpersonation), FALSE);
  EXPECT_NE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token), FALSE);
  RevertToSelf();
  GENERIC_MAPPING mapping{};
  PRIVILEGE_SET privileges{};
  DWORD size = sizeof privileges;
  DWORD granted = 0;
  BOOL allowed = FALSE;
  EXPECT_NE(AccessCheck(descriptor.data(), token, right, &mapping, &privileges, &size, &granted,
                        &allowed),
            FALSE);
  CloseHandle(token);
  return allowed != FALSE;
}

std::string TextOf(std::vector<std::uint8_t> descriptor) {
  wchar_t* text = nullptr;
  EXPECT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
                descriptor.data(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr),
            FALSE);
  const LocalMemory owned(text);
  return text == nullptr ? "" : Utf8FromWide(text);
}

// Whether programs below medium integrity are kept from executing, as its label says.
bool KeepsOutLowIntegrity(std::vector<std::uint8_t> descriptor) {
  BOOL there = FALSE;
  BOOL defaulted = FALSE;
  ACL* list = nullptr;
  void* entry = nullptr;
  if (GetSecurityDescriptorSacl(descriptor.data(), &there, &list, &defaulted) == FALSE ||
      there == FALSE || GetAce(list, 0, &entry) == FALSE) {
    return false;
  }
  const auto* const label = static_cast<SYSTEM_MANDATORY_LABEL_ACE*>(entry);
  PSID const level = const_cast<DWORD*>(&label->SidStart);
  return label->Header.AceType == SYSTEM_MANDATORY_LABEL_ACE_TYPE &&
         label->Mask == SYSTEM_MANDATORY_LABEL_NO_EXECUTE_UP &&
         *GetSidSubAuthority(level, 0) == SECURITY_MANDATORY_MEDIUM_RID;
}

TEST(ComSecurityTest, TheUserOfThisMachineComesInAndNobodyFromElsewhere) {
  for (const auto& permission : {LaunchPermission(), AccessPermission()}) {
    ASSERT_FALSE(permission.empty());
    EXPECT_TRUE(Allows(permission, kExecute | kExecuteHere));
    EXPECT_FALSE(Allows(permission, kExecuteFromElsewhere));
    EXPECT_FALSE(Allows(permission, kActivateFromElsewhere));
    // Everybody, anonymous callers and programs in a container have no entry of their own.
    const auto text = TextOf(permission);
    for (const char* const account : {";WD)", ";AN)", ";AC)", ";NU)"}) {
      EXPECT_EQ(text.find(account), std::string::npos) << text;
    }
    EXPECT_TRUE(KeepsOutLowIntegrity(permission));
  }
  EXPECT_TRUE(Allows(LaunchPermission(), kActivateHere));
}

}  // namespace
}  // namespace quillon::testing
