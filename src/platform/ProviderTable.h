// Calls the functions of a provider library (sdk/quillon_provider.h), and copies what it passes.
// Nothing that it passes is trusted: neither its sizes and counts nor its pointers. The same on
// both systems but for what a fault is, which the system's part tells.
#pragma once

#include <cstdint>
#include <string>

#include "ports/MailProvider.h"
#include "quillon_provider.h"

namespace quillon {

// How to get out of a library that does not come back by itself.
struct ProviderGuard {
  // Calls the function; whether it returned, and did not end with a fault.
  bool (*run)(void (*function)(void*), void* context);
  // Called on top of the library to end its call with a fault; null when there is no such thing.
  void (*abandon)();
};

class ProviderTable : public MailProvider {
 public:
  explicit ProviderTable(const ProviderGuard& guard) : guard_(guard) {}

  // Takes the table that the function of the library gives. As Load.
  std::int32_t Take(decltype(&QuillonProviderGetTable) getTable);

  // Whether one has been taken.
  std::int32_t Load(const std::string& library) override;

  std::int32_t Login(const ProviderCall& call, const ProviderLogin& login,
                     std::int32_t& session) override;
  std::int32_t Logout(const ProviderCall& call) override;
  std::int32_t Send(const ProviderCall& call, const ProviderMessage& message) override;
  std::int32_t List(const ProviderCall& call, const ProviderListing& listing,
                    const Found& found) override;
  std::int32_t Read(const ProviderCall& call, const ProviderReading& reading,
                    ProviderMessage& message, const NewFile& newFile) override;
  std::int32_t Delete(const ProviderCall& call, const std::string& id) override;
  std::int32_t Move(const ProviderCall& call, const std::string& id,
                    const ProviderFolder& folder) override;
  std::int32_t UnreadCount(const ProviderCall& call, const ProviderFolder& folder,
                           std::uint32_t& count) override;
  std::int32_t GetSession(const ProviderCall& call, std::int32_t& session) override;
  std::int32_t SetSession(const ProviderCall& call) override;
  bool HasAddressBooks() override;
  bool HasAddressWindow() override;
  std::int32_t Books(const ProviderCall& call, std::vector<std::string>& names) override;
  std::int32_t Entries(const ProviderCall& call, const ProviderEntries& part,
                       std::vector<ProviderEntry>& entries) override;
  std::int32_t ChooseAddresses(const ProviderCall& call,
                               std::vector<ProviderParty>& parties) override;
  std::string ErrorText(std::int32_t number) override;

 private:
  template <class... Parameters, class... Arguments>
  std::int32_t Call(QuillonInt32(QUILLON_CALL* function)(Parameters...), Arguments... arguments);

  ProviderGuard guard_;
  QuillonProviderTable table_{};  // all null until one is taken
};

}  // namespace quillon
