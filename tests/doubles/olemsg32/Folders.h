// Folders, and those in one.
#pragma once

#include <vector>

#include "olemsg32/Collection.h"
#include "olemsg32/Session.h"

namespace desk {

class FoldersObject final : public ChildOf<FoldersObject> {
 public:
  static constexpr std::string_view kName = "Folders";
  static constexpr long kNumber = 15;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<FoldersObject>> Members();

  FoldersObject(Object& parent, Folder above) : ChildOf(parent), above_(std::move(above)) {}

 private:
  using Step = std::optional<std::size_t> (Cursor::*)(std::size_t);
  std::vector<Folder> Present() const;
  Variant Walk(Step step);
  Variant Item(const VARIANT& index);
  Variant Add(const std::string& name);
  Variant Delete();
  Variant Sort(long order);

  Folder above_;
  bool descending_ = false;
  std::vector<Folder> walked_;  // as they were at the first step
  Cursor cursor_;
};

class FolderObject final : public ChildOf<FolderObject> {
 public:
  static constexpr std::string_view kName = "Folder";
  static constexpr long kNumber = 2;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<FolderObject>> Members();

  FolderObject(Object& parent, Folder folder) : ChildOf(parent), folder_(std::move(folder)) {}

 private:
  void Find();  // where it is now; throws kNotFound when it is gone
  Variant Update();
  Variant Delete();
  Variant Transfer(const Arguments& arguments, bool copy);

  Folder folder_;
  std::string newName_;  // to be taken by Update
};

}  // namespace desk
