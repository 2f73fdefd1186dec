// Simple MAPI through VBAMAP32.DLL, which takes counted strings in place of character pointers and
// arrays in place of pointers, as far as it has functions: the rest goes to MAPI32.DLL.
//
// No declaration of it was ever published. The functions are taken to be those that Visual Basic
// declares of MAPI32.DLL under the same names, with the plain functions' arguments for logon,
// logoff and deletion.
#pragma once

#include "platform/win32/Mapi32.h"

namespace quillon {

class VbaMap32 final : public Mapi32 {
 public:
  using Mapi32::Mapi32;

  static bool IsInstalled();

  std::uint32_t Logon(std::uint32_t window, const std::string& profile, const std::string& password,
                      std::uint32_t flags, std::uint32_t& session) override;
  std::uint32_t Logoff(std::uint32_t session, std::uint32_t window) override;
  std::uint32_t FindNext(std::uint32_t session, std::uint32_t window,
                         const std::string& messageType, const std::string& seed,
                         std::uint32_t flags, std::string& id) override;
  std::uint32_t ReadEnvelope(std::uint32_t session, std::uint32_t window, const std::string& id,
                             std::uint32_t flags, MapiMessage& message) override;
  std::uint32_t DeleteMail(std::uint32_t session, std::uint32_t window,
                           const std::string& id) override;
  std::uint32_t ResolveName(std::uint32_t session, std::uint32_t window, const std::string& name,
                            std::uint32_t flags, MapiRecipient& recipient) override;
  std::uint32_t Address(std::uint32_t session, std::uint32_t window, const std::string& caption,
                        std::vector<MapiRecipient>& recipients) override;
  std::uint32_t SendMailInDialog(std::uint32_t session, std::uint32_t window,
                                 const MapiMessage& message, std::uint32_t flags) override;

 private:
  template <class... Parameters, class... Arguments>
  std::uint32_t Call(const char* function, ULONG(WINAPI* type)(Parameters...),
                     Arguments... arguments);

  ForeignLibrary library_{L"vbamap32.dll"};
};

}  // namespace quillon
