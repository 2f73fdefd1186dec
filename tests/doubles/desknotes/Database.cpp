#include "desknotes/Database.h"

#include "core/Text.h"
#include "desknotes/Document.h"
#include "desknotes/Folders.h"
#include "desknotes/View.h"

namespace desk {
namespace {

constexpr std::string_view kServer = "CN=Desk/O=Desk";
constexpr std::string_view kBook = "names.nsf";
constexpr std::string_view kMail = "mail\\";
constexpr std::string_view kExtension = ".nsf";

std::string MailFileOf(const Account& account) {
  return std::string(kMail) + account.profile + std::string(kExtension);
}

// The end of a file's name may be left out.
std::string WholeName(std::string file) {
  if (!file.empty() && file.find('.') == std::string::npos) file += kExtension;
  return file;
}

}  // namespace

bool DatabaseObject::Open(const std::string& server, const std::string& file) {
  if (!server.empty()) server_ = server;
  if (!file.empty()) file_ = file;
  open_ = false;
  owner_.reset();
  if (!server_.empty() && !quillon::EqualsIgnoreCase(server_, kServer)) return false;
  const std::string name = WholeName(file_);
  if (quillon::EqualsIgnoreCase(name, kBook)) open_ = true;
  for (const Account& account : TheStore().Accounts()) {
    if (!quillon::EqualsIgnoreCase(name, MailFileOf(account))) continue;
    owner_ = account;
    open_ = true;
  }
  return open_;
}

Variant DatabaseObject::OpenMail() {
  server_.clear();
  if (!Open("", MailFileOf(user_))) throw Failed("File does not exist");
  return {};
}

void DatabaseObject::CheckOpen() const {
  if (!open_) throw MemberError(NotesError::kNotOpen);
}

Variant DatabaseObject::View(const std::string& name) const {
  CheckOpen();
  if (IsBook()) {
    const bool known = quillon::EqualsIgnoreCase(name, "($Users)");
    return known ? MakeResult<ViewObject>(ViewFacts{"($Users)", std::nullopt, false}, std::nullopt)
                 : Nothing();
  }
  const std::optional<ViewFacts> view = FindView(owner_->profile, name);
  return view ? MakeResult<ViewObject>(*view, owner_) : Nothing();
}

Variant DatabaseObject::Views() const {
  CheckOpen();
  std::vector<Variant> views;
  if (IsBook()) {
    views.push_back(View("($Users)"));
  } else {
    for (const ViewFacts& view : ViewsOf(owner_->profile)) {
      views.push_back(MakeResult<ViewObject>(view, owner_));
    }
  }
  return FromList(std::move(views));
}

Variant DatabaseObject::Document(const std::string& universalId) const {
  CheckOpen();
  const std::string id = StoreIdOf(universalId);
  if (IsBook() || !TheStore().Read(owner_->profile, id)) {
    throw MemberError(NotesError::kNoSuchDocument);
  }
  return MakeResult<DocumentObject>(ReadDocument(owner_->profile, id), owner_);
}

std::span<const MemberOf<DatabaseObject>> DatabaseObject::Members() {
  using Self = DatabaseObject;
  static const std::vector<Row> members{
      {"IsOpen", 1, "", [](Self& o, const Arguments&) { return FromFlag(o.open_); }},
      {"Server", 2, "", [](Self& o, const Arguments&) { return FromText(o.server_); }},
      {"FilePath", 3, "", [](Self& o, const Arguments&) { return FromText(o.file_); }},
      {"Title", 4, "",
       [](Self& o, const Arguments&) {
         return FromText(!o.open_ ? "" : o.IsBook() ? "Address Book" : o.owner_->name);
       }},
      {"Open", 5, "Server File |",
       [](Self& o, const Arguments& a) { return FromFlag(o.Open(a.Text(0), a.Text(1))); }},
      {"OpenMail", 6, "", [](Self& o, const Arguments&) { return o.OpenMail(); }},
      {"GetView", 7, "Name |", [](Self& o, const Arguments& a) { return o.View(a.Text(0)); }},
      {"Views", 8, "", [](Self& o, const Arguments&) { return o.Views(); }},
      {"CreateDocument", 9, "",
       [](Self& o, const Arguments&) {
         o.CheckOpen();
         auto document = std::make_shared<DocumentState>();
         if (o.owner_) document->mailbox = o.owner_->profile;
         return MakeResult<DocumentObject>(std::move(document), o.owner_);
       }},
      {"GetDocumentByUNID", 10, "UNID |",
       [](Self& o, const Arguments& a) { return o.Document(a.Text(0)); }},
      {"AllDocuments", 11, "",
       [](Self& o, const Arguments&) {
         o.CheckOpen();
         return o.IsBook() ? Nothing()
                           : MakeResult<CollectionObject>(
                                 DocumentsIn(o.owner_->profile, ViewFacts{}), o.owner_);
       }},
  };
  return members;
}

}  // namespace desk
