#include "olemsg32/InfoStores.h"

#include <vector>

#include "olemsg32/Collection.h"
#include "olemsg32/Folders.h"
#include "olemsg32/StoreId.h"

namespace desk {
namespace {

// The one with the inbox is not the first, as on many machines.
std::vector<std::string> Mailboxes(const Session& session) {
  return {kPublicFolders, session.User().profile};
}

}  // namespace

std::span<const MemberOf<InfoStoresObject>> InfoStoresObject::Members() {
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](InfoStoresObject& o, const Arguments&) {
         return FromNumber(static_cast<long>(Mailboxes(o.Owner()).size()));
       }},
      {"Item", 21, "Index |",
       [](InfoStoresObject& o, const Arguments& a) {
         const std::vector<std::string> mailboxes = Mailboxes(o.Owner());
         const std::size_t place =
             PlaceOf(a.At(0), mailboxes.size(), [&](std::size_t i) { return mailboxes[i]; });
         return MakeResult<InfoStoreObject>(o, mailboxes[place]);
       }},
  };
  return members;
}

std::span<const MemberOf<InfoStoreObject>> InfoStoreObject::Members() {
  static const std::vector<Row> members{
      {"Name", 23, "", [](InfoStoreObject& o, const Arguments&) { return FromText(o.mailbox_); }},
      {"ID", 14, "",
       [](InfoStoreObject& o, const Arguments&) { return FromText(HexOf(o.mailbox_)); }},
      {"Index", 19, "",
       [](InfoStoreObject& o, const Arguments&) {
         return FromNumber(o.mailbox_ == kPublicFolders ? 1 : 2);
       }},
      {"ProviderName", 58, "", [](InfoStoreObject&, const Arguments&) { return FromText("Desk"); }},
      {"RootFolder", 59, "",
       [](InfoStoreObject& o, const Arguments&) {
         return MakeResult<FolderObject>(o, TheStore().Root(o.mailbox_));
       }},
  };
  return members;
}

}  // namespace desk
