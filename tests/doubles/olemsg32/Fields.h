// Properties of a message by their tags, and fields of the client's own by their names.
#pragma once

#include <cstdint>

#include "olemsg32/MessageObject.h"

namespace desk {

int ImportanceOf(const VARIANT& value);  // throws kInvalidParameter

class FieldsObject final : public MessageChildOf<FieldsObject> {
 public:
  static constexpr std::string_view kName = "Fields";
  static constexpr long kNumber = 19;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<FieldsObject>> Members();

  FieldsObject(Object& parent, MessageStatePtr state) : MessageChildOf(parent, std::move(state)) {}

 private:
  Variant Item(const VARIANT& asked);
  Variant Add(const Arguments& arguments);
  Variant Delete();
};

// One that the message holds as a field.
class FieldObject final : public PartObject<FieldObject, Field> {
 public:
  static constexpr std::string_view kName = "Field";
  static constexpr long kNumber = 6;
  static constexpr std::string_view kDefault = "Value";
  static std::span<const MemberOf<FieldObject>> Members();

  FieldObject(Object& parent, MessageStatePtr state, PartPtr part)
      : PartObject(parent, std::move(state), std::move(part)) {}
};

// The row of a tag that is a property of every message.
struct TagRow;

class TagObject final : public MessageChildOf<TagObject> {
 public:
  static constexpr std::string_view kName = "Field";
  static constexpr long kNumber = 6;
  static constexpr std::string_view kDefault = "Value";
  static std::span<const MemberOf<TagObject>> Members();

  TagObject(Object& parent, MessageStatePtr state, const TagRow& row)
      : MessageChildOf(parent, std::move(state)), row_(row) {}

 private:
  const TagRow& row_;
};

}  // namespace desk
