// The messages of a folder.
#pragma once

#include <vector>

#include "olemsg32/Collection.h"
#include "olemsg32/MessageFilter.h"
#include "olemsg32/Session.h"

namespace desk {

class MessagesObject final : public ChildOf<MessagesObject> {
 public:
  static constexpr std::string_view kName = "Messages";
  static constexpr long kNumber = 16;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<MessagesObject>> Members();

  MessagesObject(Object& parent, Folder folder) : ChildOf(parent), folder_(std::move(folder)) {}

 private:
  using Step = std::optional<std::size_t> (Cursor::*)(std::size_t);
  // What a message is sorted by.
  using Key = std::string (*)(const Message&);

  Folder Present() const;
  std::vector<std::string> Shown() const;  // identifiers, as filtered and sorted
  Variant Item(const VARIANT& index);
  Variant Add(const Arguments& arguments);
  Variant Delete();
  Variant Sort(const Arguments& arguments);
  Variant Begin(const Arguments& arguments, Step step);
  Variant Walk(Step step);
  void PutFilter(const VARIANT& value);

  Folder folder_;
  std::shared_ptr<FilterRules> rules_ = std::make_shared<FilterRules>();
  std::string onlyType_;  // what GetFirst or GetLast was given
  Key key_ = nullptr;     // none: in the order in which they came
  bool descending_ = false;
  bool walking_ = false;
  std::vector<std::string> walked_;  // as they were when the walk began
  Cursor cursor_;
};

}  // namespace desk
