#include "olemsg32/Folders.h"

#include <algorithm>
#include <array>

#include "core/Text.h"
#include "olemsg32/Messages.h"
#include "olemsg32/StoreId.h"

namespace desk {
namespace {

Folder Current(const Folder& folder) {
  const std::optional<Folder> found = TheStore().FindFolder(folder.mailbox, folder.id);
  if (!found) throw MemberError(MapiError::kNotFound);
  return *found;
}

void CheckNameFree(const Folder& parent, const std::string& name) {
  if (name.empty()) throw MemberError(MapiError::kInvalidParameter);
  if (TheStore().Subfolder(parent, name)) throw MemberError(MapiError::kCollision);
}

// The root folder of a mailbox, and those in it that every account has, stay as they are.
void CheckMayGo(const Folder& folder) {
  constexpr std::array<std::string_view, 4> kFixed{kInbox, kOutbox, kSentItems, kDeletedItems};
  const bool top = TheStore().Root(folder.mailbox).id == folder.parentId;
  const bool fixed = std::ranges::find(kFixed, folder.name) != kFixed.end();
  if (folder.parentId.empty() || (top && fixed)) throw MemberError(MapiError::kNoAccess);
}

void CheckOutside(const Folder& target, const Folder& folder) {
  for (Folder at = target; !at.id.empty();) {
    if (at.id == folder.id) throw MemberError(MapiError::kFolderCycle);
    if (at.parentId.empty()) return;
    at = *TheStore().FindFolder(at.mailbox, at.parentId);
  }
}

}  // namespace

std::vector<Folder> FoldersObject::Present() const {
  std::vector<Folder> folders = TheStore().Subfolders(Current(above_));
  if (descending_) std::ranges::reverse(folders);
  return folders;
}

Variant FoldersObject::Walk(Step step) {
  const bool begins = step == &Cursor::First || step == &Cursor::Last;
  if (begins || walked_.empty()) walked_ = Present();
  for (;;) {
    const std::optional<std::size_t> place = (cursor_.*step)(walked_.size());
    if (!place) return Nothing();
    const Folder& folder = walked_[*place];
    const std::optional<Folder> now = TheStore().FindFolder(folder.mailbox, folder.id);
    if (now) return MakeResult<FolderObject>(*this, *now);
    // Deleted since the walk began.
    if (step == &Cursor::First) step = &Cursor::Next;
    if (step == &Cursor::Last) step = &Cursor::Previous;
  }
}

Variant FoldersObject::Item(const VARIANT& index) {
  const std::vector<Folder> folders = Present();
  const std::size_t place =
      PlaceOf(index, folders.size(), [&](std::size_t i) { return folders[i].name; });
  return MakeResult<FolderObject>(*this, folders[place]);
}

Variant FoldersObject::Add(const std::string& name) {
  const Folder above = Current(above_);
  CheckNameFree(above, name);
  return MakeResult<FolderObject>(*this, TheStore().AddFolder(above, name));
}

Variant FoldersObject::Delete() {
  const std::vector<Folder> folders = Present();
  for (const Folder& folder : folders) CheckMayGo(folder);
  for (const Folder& folder : folders) TheStore().RemoveFolder(folder);
  return {};
}

Variant FoldersObject::Sort(long order) {
  if (order < 0 || order > 2) throw MemberError(MapiError::kInvalidParameter);
  descending_ = order == 2;
  walked_.clear();
  cursor_ = {};
  return {};
}

std::span<const MemberOf<FoldersObject>> FoldersObject::Members() {
  using Self = FoldersObject;
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](Self& o, const Arguments&) { return FromNumber(static_cast<long>(o.Present().size())); }},
      {"Item", 21, "Index |", [](Self& o, const Arguments& a) { return o.Item(a.At(0)); }},
      {"Add", 100, "Name |", [](Self& o, const Arguments& a) { return o.Add(a.Text(0)); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
      {"Sort", 134, "SortOrder PropID",
       [](Self& o, const Arguments& a) { return o.Sort(a.Number(0, 1)); }},
      {"GetFirst", 109, "", [](Self& o, const Arguments&) { return o.Walk(&Cursor::First); }},
      {"GetNext", 111, "", [](Self& o, const Arguments&) { return o.Walk(&Cursor::Next); }},
      {"GetLast", 110, "", [](Self& o, const Arguments&) { return o.Walk(&Cursor::Last); }},
      {"GetPrevious", 112, "", [](Self& o, const Arguments&) { return o.Walk(&Cursor::Previous); }},
  };
  return members;
}

void FolderObject::Find() {
  folder_ = Current(folder_);
}

Variant FolderObject::Update() {
  Find();
  if (newName_.empty() || newName_ == folder_.name) return {};
  CheckMayGo(folder_);
  if (!quillon::EqualsIgnoreCase(newName_, folder_.name)) {
    CheckNameFree(*TheStore().FindFolder(folder_.mailbox, folder_.parentId), newName_);
  }
  folder_ = TheStore().RenameFolder(folder_, newName_);
  newName_.clear();
  return {};
}

Variant FolderObject::Delete() {
  Find();
  CheckMayGo(folder_);
  TheStore().RemoveFolder(folder_);
  return {};
}

// FolderID, StoreID, Name, CopySubfolders
Variant FolderObject::Transfer(const Arguments& arguments, bool copy) {
  Find();
  const Folder target = Owner().FindFolder(arguments.Text(0), arguments.Text(1));
  const std::string given = arguments.Text(2);
  const std::string name = given.empty() ? folder_.name : given;
  CheckOutside(target, folder_);
  CheckNameFree(target, name);
  if (!copy) {
    CheckMayGo(folder_);
    folder_ = TheStore().MoveFolder(folder_, target, name);
    return MakeResult<FolderObject>(*this, folder_);
  }
  const Folder made = TheStore().CopyFolder(folder_, target, name);
  if (!arguments.Flag(3, true)) {
    for (const Folder& below : TheStore().Subfolders(made)) TheStore().RemoveFolder(below);
  }
  return MakeResult<FolderObject>(*this, made);
}

std::span<const MemberOf<FolderObject>> FolderObject::Members() {
  using Self = FolderObject;
  static const std::vector<Row> members{
      {"Name", 23, "",
       [](Self& o, const Arguments&) {
         return FromText(o.newName_.empty() ? o.folder_.name : o.newName_);
       },
       [](Self& o, const Arguments&, const VARIANT& value) { o.newName_ = TextOf(value); }},
      {"ID", 14, "", [](Self& o, const Arguments&) { return FromText(o.folder_.id); }},
      {"FolderID", 51, "", [](Self& o, const Arguments&) { return FromText(o.folder_.parentId); }},
      {"StoreID", 52, "",
       [](Self& o, const Arguments&) { return FromText(HexOf(o.folder_.mailbox)); }},
      {"Folders", 13, "",
       [](Self& o, const Arguments&) { return MakeResult<FoldersObject>(o, o.folder_); }},
      {"Messages", 22, "",
       [](Self& o, const Arguments&) { return MakeResult<MessagesObject>(o, o.folder_); }},
      {"Update", 132, "MakePermanent RefreshObject",
       [](Self& o, const Arguments&) { return o.Update(); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
      {"CopyTo", 104, "FolderID | StoreID Name CopySubfolders",
       [](Self& o, const Arguments& a) { return o.Transfer(a, true); }},
      {"MoveTo", 120, "FolderID | StoreID Name",
       [](Self& o, const Arguments& a) { return o.Transfer(a, false); }},
      {"IsSameAs", 136, "Folder |",
       [](Self& o, const Arguments& a) {
         const auto* other = dynamic_cast<Self*>(Object::In(a.At(0)));
         if (other == nullptr) throw CallError(DISP_E_TYPEMISMATCH);
         return FromFlag(o.folder_.id == other->folder_.id);
       }},
  };
  return members;
}

}  // namespace desk
