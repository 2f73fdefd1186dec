// Whom a message goes to.
#pragma once

#include "olemsg32/MessageObject.h"

namespace desk {

// Gives a recipient that has no address the one that its name means. With a dialog the user picks
// one of several. Throws kNotFound, kAmbiguousRecipient or kUserCancel.
void ResolveRecipient(Recipient& recipient, bool dialog);

class RecipientsObject final : public MessageChildOf<RecipientsObject> {
 public:
  static constexpr std::string_view kName = "Recipients";
  static constexpr long kNumber = 17;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<RecipientsObject>> Members();

  // What the user of the address book chooses to go with those that are given, if any: with the
  // word "add all" whoever the book has, with "send" nobody else. Throws kUserCancel.
  static Variant Choose(Object& parent, const VARIANT& given);

  RecipientsObject(Object& parent, MessageStatePtr state)
      : MessageChildOf(parent, std::move(state)) {}

 private:
  Variant Item(const VARIANT& index);
  Variant Add(const Arguments& arguments);
  Variant Resolved() const;
  Variant Resolve(bool dialog);
  Variant Delete();
};

class RecipientObject final : public PartObject<RecipientObject, Recipient> {
 public:
  static constexpr std::string_view kName = "Recipient";
  static constexpr long kNumber = 4;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<RecipientObject>> Members();

  RecipientObject(Object& parent, MessageStatePtr state, PartPtr part)
      : PartObject(parent, std::move(state), std::move(part)) {}

 private:
  Variant AddressEntry();
};

}  // namespace desk
