// Simple MAPI through the functions of MAPI32.DLL itself.
#pragma once

#include "platform/win32/ForeignLibrary.h"
#include "platform/win32/MapiRecords.h"
#include "ports/CodePage.h"
#include "ports/SimpleMapi.h"

namespace quillon {

class Mapi32 : public SimpleMapi {
 public:
  // Texts cross in the code page.
  explicit Mapi32(const CodePage& codePage) : codePage_(codePage) {}

  std::uint32_t Logon(std::uint32_t window, const std::string& profile, const std::string& password,
                      std::uint32_t flags, std::uint32_t& session) override;
  std::uint32_t Logoff(std::uint32_t session, std::uint32_t window) override;
  std::uint32_t FindNext(std::uint32_t session, std::uint32_t window,
                         const std::string& messageType, const std::string& seed,
                         std::uint32_t flags, std::string& id) override;
  std::uint32_t ReadEnvelope(std::uint32_t session, std::uint32_t window, const std::string& id,
                             std::uint32_t flags, MapiMessage& message) override;
  std::uint32_t ReadMail(std::uint32_t session, std::uint32_t window, const std::string& id,
                         std::uint32_t flags, MapiMessage& message) final;
  std::uint32_t DeleteMail(std::uint32_t session, std::uint32_t window,
                           const std::string& id) override;
  std::uint32_t ResolveName(std::uint32_t session, std::uint32_t window, const std::string& name,
                            std::uint32_t flags, MapiRecipient& recipient) override;
  std::uint32_t Address(std::uint32_t session, std::uint32_t window, const std::string& caption,
                        std::vector<MapiRecipient>& recipients) override;
  // What the code page cannot hold goes through MAPISendMailW, where the library has it.
  std::uint32_t SendMail(std::uint32_t session, std::uint32_t window, const MapiMessage& message,
                         std::uint32_t flags) final;
  std::uint32_t SendMailInDialog(std::uint32_t session, std::uint32_t window,
                                 const MapiMessage& message, std::uint32_t flags) override;

 protected:
  const CodePage& Encoding() const noexcept { return codePage_; }

 private:
  template <class... Parameters, class... Arguments>
  std::uint32_t Call(const char* function, ULONG(WINAPI* type)(Parameters...),
                     Arguments... arguments);
  bool Fits(const MapiMessage& message) const;

  const CodePage& codePage_;
  ForeignLibrary library_{L"mapi32.dll"};
};

}  // namespace quillon
