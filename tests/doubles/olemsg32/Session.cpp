#include "olemsg32/Session.h"

#include <vector>

#include "core/Text.h"
#include "olemsg32/AddressBook.h"
#include "olemsg32/ConversationIndex.h"
#include "olemsg32/Folders.h"
#include "olemsg32/InfoStores.h"
#include "olemsg32/MessageObject.h"
#include "olemsg32/Recipients.h"
#include "olemsg32/StoreId.h"

namespace desk {
namespace {

// Who a client says it is.
struct Login {
  std::string mailbox;
  std::string password;
  bool anonymous = false;
};

// "server", the mailbox, and perhaps "anon", one below the other, take the place of a profile.
Login LoginOf(const Arguments& arguments) {
  Login login{arguments.Text(0), arguments.Text(1)};
  if (arguments.Text(6).empty()) return login;
  const std::vector<std::string> lines = quillon::Split(arguments.Text(6), "\n");
  const bool anonymous = lines.size() == 3 && lines[2] == "anon";
  if (lines[0].empty() || lines.size() < 2 || (lines.size() > 2 && !anonymous)) {
    throw MemberError(MapiError::kLogonFailed);
  }
  return {lines[1], login.password, anonymous};
}

}  // namespace

std::span<const MemberOf<Session>> Session::Members() {
  static const std::vector<Row> members{
      Row("Version", 44, "",
          [](Session&, const Arguments&) {
            return FromText(TheStore().Word("Version").value_or("1.1"));
          })
          .Free(),
      Row("OperatingSystem", 24, "",
          [](Session&, const Arguments&) { return FromText("Microsoft Windows"); })
          .Free(),
      {"Name", 23, "", [](Session& s, const Arguments&) { return FromText(s.User().profile); }},
      {"CurrentUser", 1, "",
       [](Session& s, const Arguments&) {
         return MakeResult<AddressEntryObject>(s, Entry{s.User().name, s.User().address});
       }},
      {"Inbox", 15, "", [](Session& s, const Arguments&) { return s.DefaultFolder(kInbox); }},
      {"Outbox", 16, "", [](Session& s, const Arguments&) { return s.DefaultFolder(kOutbox); }},
      {"InfoStores", 57, "",
       [](Session& s, const Arguments&) { return MakeResult<InfoStoresObject>(s); }},
      {"AddressLists", 4, "",
       [](Session& s, const Arguments&) { return MakeResult<AddressListsObject>(s); }},
      Row("Logon", 119,
          "ProfileName ProfilePassword ShowDialog NewSession ParentWindow NoMail ProfileInfo",
          [](Session& s, const Arguments& a) { return s.Logon(a); })
          .Free(),
      {"Logoff", 118, "", [](Session& s, const Arguments&) { return s.Logoff(); }},
      {"GetInfoStore", 122, "StoreID",
       [](Session& s, const Arguments& a) {
         return MakeResult<InfoStoreObject>(s, s.Mailbox(a.Text(0)));
       }},
      {"GetFolder", 116, "FolderID StoreID",
       [](Session& s, const Arguments& a) {
         return MakeResult<FolderObject>(s, s.FindFolder(a.Text(0), a.Text(1)));
       }},
      {"GetMessage", 117, "MessageID | StoreID",
       [](Session& s, const Arguments& a) { return s.GetMessage(a); }},
      {"GetAddressEntry", 114, "EntryID |",
       [](Session& s, const Arguments& a) {
         return MakeResult<AddressEntryObject>(s, EntryOfId(a.Text(0)));
       }},
      {"AddressBook", 101,
       "Recipients Title OneAddress ForceResolution RecipLists ToLabel CcLabel BccLabel "
       "ParentWindow",
       [](Session& s, const Arguments& a) { return RecipientsObject::Choose(s, a.At(0)); }},
      {"DeliverNow", 108, "", [](Session&, const Arguments&) { return Variant(); }},
      {"CompareIDs", 137, "ID1 ID2 |",
       [](Session&, const Arguments& a) {
         return FromFlag(quillon::EqualsIgnoreCase(a.Text(0), a.Text(1)));
       }},
      {"CreateConversationIndex", 146, "ParentIndex",
       [](Session&, const Arguments& a) { return FromText(NewConversationIndex(a.Text(0))); }},
  };
  return members;
}

void Session::CheckUsable() const {
  if (!user_) throw MemberError(MapiError::kNotInitialized);
}

const Account& Session::User() const {
  CheckUsable();
  return *user_;
}

std::string Session::Mailbox(const std::string& storeId) const {
  if (storeId.empty()) return User().profile;
  std::string mailbox = FromHex(storeId).value_or("");
  if (mailbox != User().profile && mailbox != kPublicFolders) {
    throw MemberError(MapiError::kNotFound);
  }
  return mailbox;
}

Folder Session::FindFolder(const std::string& folderId, const std::string& storeId) const {
  const std::string mailbox = Mailbox(storeId);
  if (folderId.empty()) return TheStore().Root(mailbox);
  const std::optional<Folder> folder = TheStore().FindFolder(mailbox, folderId);
  if (!folder) throw MemberError(MapiError::kNotFound);
  return *folder;
}

Variant Session::Logon(const Arguments& arguments) {
  if (user_) throw MemberError(MapiError::kSessionLimit);
  // There is nothing to show or to share, but a wrong type is one here too.
  arguments.Flag(2, true);
  arguments.Flag(3, false);
  arguments.Number(4, 0);
  const Login login = LoginOf(arguments);
  const std::optional<Account> account = TheStore().FindAccount(login.mailbox);
  // The default profile is that of whoever uses the workstation, and asks for no password.
  const bool trusted = login.anonymous || (login.mailbox.empty() && login.password.empty());
  if (!account || (account->password != login.password && !trusted)) {
    throw MemberError(MapiError::kLogonFailed);
  }
  user_ = account;
  ++era_;
  return {};
}

Variant Session::Logoff() {
  user_.reset();
  ++era_;
  return {};
}

Variant Session::GetMessage(const Arguments& arguments) {
  const std::string mailbox = Mailbox(arguments.Text(1));
  return MakeResult<MessageObject>(*this, ReadState(mailbox, arguments.Text(0)));
}

Variant Session::DefaultFolder(const char* name) {
  const std::optional<Folder> folder = TheStore().Subfolder(TheStore().Root(User().profile), name);
  if (!folder) throw MemberError(MapiError::kNotFound);
  return MakeResult<FolderObject>(*this, *folder);
}

}  // namespace desk
