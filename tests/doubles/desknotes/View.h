// "NotesView" and "NotesDocumentCollection": documents in an order, those of a mail file the oldest
// first, those of the address book by name.
#pragma once

#include "desknotes/Folders.h"
#include "desknotes/NotesObject.h"

namespace desk {

// A document of an owner's mail file by its identifier; of the address book by its place there.
Variant DocumentOf(const std::string& id, const std::optional<Account>& owner);

class ViewObject final : public NotesObjectOf<ViewObject> {
 public:
  static constexpr std::string_view kName = "NotesView";
  static std::span<const MemberOf<ViewObject>> Members();

  ViewObject(ViewFacts view, std::optional<Account> owner)
      : view_(std::move(view)), owner_(std::move(owner)) {}

 private:
  // Those of the last look when the client wants no others meanwhile.
  const std::vector<std::string>& Ids();
  Variant At(std::size_t place);
  Variant Beside(const VARIANT& document, bool next);
  Variant ByKey(const Arguments& arguments);
  Variant Remove();

  ViewFacts view_;
  std::optional<Account> owner_;
  std::vector<std::string> ids_;
  bool looked_ = false;
  bool autoUpdate_ = true;
};

class CollectionObject final : public NotesObjectOf<CollectionObject> {
 public:
  static constexpr std::string_view kName = "NotesDocumentCollection";
  static std::span<const MemberOf<CollectionObject>> Members();

  CollectionObject(std::vector<std::string> ids, std::optional<Account> owner)
      : ids_(std::move(ids)), owner_(std::move(owner)) {}

 private:
  Variant At(std::size_t place) const;

  std::vector<std::string> ids_;
  std::optional<Account> owner_;
};

}  // namespace desk
