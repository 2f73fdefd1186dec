#include "platform/win32/ComSecurity.h"

#include <array>
#include <cstddef>
#include <objbase.h>
#include <sddl.h>

#include "platform/win32/LocalMemory.h"
#include "platform/win32/ProcessUser.h"

namespace quillon {

namespace {

// The rights of COM in the notation of descriptors: a right without its local or remote halves
// would mean both. 0x1 is execute, 0x2 execute from this machine, 0x8 activate from this machine.
constexpr wchar_t kLaunch[] = L"O:BAG:BAD:(A;;0xB;;;AU)(A;;0xB;;;SY)(A;;0xB;;;BA)S:(ML;;NX;;;ME)";

std::wstring CallersDescriptor() {
  const ProcessUser user;
  wchar_t* text = nullptr;
  if (user.Sid() == nullptr || ConvertSidToStringSidW(user.Sid(), &text) == FALSE) return {};
  const LocalMemory owned(text);
  const std::wstring sid = text;
  return L"O:" + sid + L"G:" + sid + L"D:(A;;0x3;;;" + sid +
         L")(A;;0x3;;;SY)(A;;0x3;;;BA)S:(ML;;NX;;;ME)";
}

std::vector<std::uint8_t> DescriptorOf(const std::wstring& text) {
  void* descriptor = nullptr;
  ULONG size = 0;
  if (ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                           &descriptor, &size) == FALSE) {
    return {};
  }
  const LocalMemory owned(descriptor);
  const auto* const bytes = static_cast<const std::uint8_t*>(descriptor);
  return {bytes, bytes + size};
}

// Windows 98 and its like have neither accounts nor rights.
bool HasAccounts() {
  return (GetVersion() & 0x80000000U) == 0;
}

bool AdministratorHasDecided(REFGUID appId) {
  std::array<wchar_t, 40> text{};
  StringFromGUID2(appId, text.data(), static_cast<int>(text.size()));
  const std::wstring key = L"AppID\\" + std::wstring(text.data());
  return RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), L"AccessPermission", RRF_RT_REG_BINARY,
                      nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

// A descriptor whose parts are pointed to, which is the only kind that COM takes.
class AbsoluteDescriptor {
 public:
  explicit AbsoluteDescriptor(std::vector<std::uint8_t> relative) {
    std::array<DWORD, 5> sizes{};
    MakeAbsoluteSD(relative.data(), nullptr, sizes.data(), nullptr, &sizes[1], nullptr, &sizes[2],
                   nullptr, &sizes[3], nullptr, &sizes[4]);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      parts_[i].resize(sizes[i] / sizeof(std::max_align_t) + 1);
    }
    made_ = MakeAbsoluteSD(relative.data(), parts_[0].data(), sizes.data(),
                           reinterpret_cast<ACL*>(parts_[1].data()), &sizes[1],
                           reinterpret_cast<ACL*>(parts_[2].data()), &sizes[2], parts_[3].data(),
                           &sizes[3], parts_[4].data(), &sizes[4]) != FALSE;
  }

  PSECURITY_DESCRIPTOR Get() noexcept { return made_ ? parts_[0].data() : nullptr; }

 private:
  std::array<std::vector<std::max_align_t>, 5> parts_;  // itself, its two lists, owner and group
  bool made_ = false;
};

}  // namespace

std::vector<std::uint8_t> LaunchPermission() {
  return DescriptorOf(kLaunch);
}

std::vector<std::uint8_t> AccessPermission() {
  return DescriptorOf(CallersDescriptor());
}

HRESULT SecureCalls(REFGUID appId) {
  if (!HasAccounts()) return S_OK;
  if (AdministratorHasDecided(appId)) {
    auto id = appId;
    return CoInitializeSecurity(&id, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CONNECT,
                                RPC_C_IMP_LEVEL_IDENTIFY, nullptr, EOAC_APPID, nullptr);
  }
  const auto relative = AccessPermission();
  if (relative.empty()) return HRESULT_FROM_WIN32(GetLastError());
  AbsoluteDescriptor callers(relative);
  if (callers.Get() == nullptr) return HRESULT_FROM_WIN32(GetLastError());
  const auto initialize = [&callers] {
    return CoInitializeSecurity(callers.Get(), -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CONNECT,
                                RPC_C_IMP_LEVEL_IDENTIFY, nullptr, EOAC_NONE, nullptr);
  };
  const HRESULT result = initialize();
  if (SUCCEEDED(result)) return result;
  // A system that takes no label here has its own, which says the same.
  SetSecurityDescriptorSacl(callers.Get(), FALSE, nullptr, FALSE);
  return initialize();
}

}  // namespace quillon
