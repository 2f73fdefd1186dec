// The mailboxes that a session sees: the public folders and the user's own.
#pragma once

#include "olemsg32/Session.h"

namespace desk {

class InfoStoresObject final : public ChildOf<InfoStoresObject> {
 public:
  static constexpr std::string_view kName = "InfoStores";
  static constexpr long kNumber = 14;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<InfoStoresObject>> Members();

  explicit InfoStoresObject(Object& parent) : ChildOf(parent) {}
};

class InfoStoreObject final : public ChildOf<InfoStoreObject> {
 public:
  static constexpr std::string_view kName = "InfoStore";
  static constexpr long kNumber = 1;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<InfoStoreObject>> Members();

  InfoStoreObject(Object& parent, std::string mailbox)
      : ChildOf(parent), mailbox_(std::move(mailbox)) {}

 private:
  std::string mailbox_;
};

}  // namespace desk
