// The files of a message.
#pragma once

#include "olemsg32/MessageObject.h"

namespace desk {

class AttachmentsObject final : public MessageChildOf<AttachmentsObject> {
 public:
  static constexpr std::string_view kName = "Attachments";
  static constexpr long kNumber = 18;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<AttachmentsObject>> Members();

  AttachmentsObject(Object& parent, MessageStatePtr state)
      : MessageChildOf(parent, std::move(state)) {}

 private:
  Variant Item(const VARIANT& index);
  Variant Add(const Arguments& arguments);
  Variant Delete();
};

class AttachmentObject final : public PartObject<AttachmentObject, TakenAttachment> {
 public:
  static constexpr std::string_view kName = "Attachment";
  static constexpr long kNumber = 5;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<AttachmentObject>> Members();

  AttachmentObject(Object& parent, MessageStatePtr state, PartPtr part)
      : PartObject(parent, std::move(state), std::move(part)) {}

 private:
  Variant WriteToFile(const std::string& path);
};

}  // namespace desk
