#include "platform/win32/FileRights.h"

#include <windows.h>
#include <aclapi.h>
#include <array>
#include <sddl.h>
#include <string_view>

#include "platform/win32/LocalMemory.h"
#include "platform/win32/ProcessUser.h"

namespace quillon {

namespace {

// Who may change everything anyway: the system, the administrators, the owner whoever it is, the
// creator of what is made, and the service that installs Windows' own programs.
constexpr std::array kTrusted = {L"S-1-5-18", L"S-1-5-32-544", L"S-1-3-4", L"S-1-3-0",
                                 L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};

constexpr ACCESS_MASK kChanging = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE |
                                  WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

bool IsTrusted(PSID identifier) {
  wchar_t* text = nullptr;
  if (ConvertSidToStringSidW(identifier, &text) == FALSE) return false;
  const LocalMemory owned(text);
  for (const std::wstring_view trusted : kTrusted) {
    if (trusted == text) return true;
  }
  const ProcessUser user;
  return user.Sid() != nullptr && EqualSid(user.Sid(), identifier) != FALSE;
}

// What an entry lets its holder do; entries that deny or audit let nobody do anything. The holder
// stands at the same place in all kinds that files have.
bool LetsOthersChange(const ACE_HEADER* entry) {
  if (entry->AceType != ACCESS_ALLOWED_ACE_TYPE &&
      entry->AceType != ACCESS_ALLOWED_CALLBACK_ACE_TYPE) {
    return false;
  }
  const auto* const allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE*>(entry);
  return (allowed->Mask & kChanging) != 0 && !IsTrusted(const_cast<DWORD*>(&allowed->SidStart));
}

}  // namespace

bool OthersMayChange(const std::wstring& path) {
  PSID owner = nullptr;
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT,
                            OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr,
                            &list, nullptr, &descriptor) != ERROR_SUCCESS) {
    return true;
  }
  const LocalMemory owned(descriptor);
  if (list == nullptr || owner == nullptr || !IsTrusted(owner)) return true;
  for (DWORD index = 0; index < list->AceCount; ++index) {
    void* entry = nullptr;
    if (GetAce(list, index, &entry) == FALSE) return true;
    if (LetsOthersChange(static_cast<const ACE_HEADER*>(entry))) return true;
  }
  return false;
}

}  // namespace quillon
