#include "desknotes/Session.h"

#include "desknotes/Database.h"
#include "desknotes/Names.h"

namespace desk {

SessionObject::SessionObject() {
  const std::scoped_lock oneAtATime(StoreMutex());
  const std::optional<Account> account =
      TheStore().FindAccount(TheStore().Word("NotesUser").value_or(""));
  if (!account) throw StoreError("no such account");
  user_ = *account;
}

std::span<const MemberOf<SessionObject>> SessionObject::Members() {
  using Self = SessionObject;
  static const std::vector<Row> members{
      {"UserName", 1, "",
       [](Self& o, const Arguments&) { return FromText(CanonicalName(o.user_.name)); }},
      {"AddressBooks", 2, "",
       [](Self& o, const Arguments&) {
         std::vector<Variant> books;
         books.push_back(MakeResult<DatabaseObject>(o.user_, "", "names.nsf"));
         return FromList(std::move(books));
       }},
      {"GetDatabase", 3, "Server File | CreateOnFail",
       [](Self& o, const Arguments& a) {
         auto database = Make<DatabaseObject>(o.user_, a.Text(0), a.Text(1));
         if (!a.Text(1).empty()) database->Open("", "");
         return FromObject(ComPtr<IDispatch>(database.Get()));
       }},
      {"CurrentDatabase", 4, "", [](Self&, const Arguments&) { return Nothing(); }},
  };
  return members;
}

}  // namespace desk
