// "NotesDocument", its items and its attachments.
#pragma once

#include <deque>

#include "desknotes/DocumentState.h"
#include "desknotes/NotesObject.h"

namespace desk {

// An item, and rich text, which is one with more members.
class ItemObject final : public NotesObjectOf<ItemObject> {
 public:
  static constexpr std::string_view kName = "NotesItem";
  static std::span<const MemberOf<ItemObject>> Members();

  ItemObject(DocumentPtr document, Item item)
      : document_(std::move(document)), item_(std::move(item)) {}

 private:
  DocumentPtr document_;
  Item item_;
};

class RichTextObject final : public NotesObjectOf<RichTextObject> {
 public:
  static constexpr std::string_view kName = "NotesRichTextItem";
  static std::span<const MemberOf<RichTextObject>> Members();

  RichTextObject(DocumentPtr document, std::string item)
      : document_(std::move(document)), item_(std::move(item)) {}

 private:
  std::string Text() const { return document_->Text(item_); }
  Variant Append(const std::string& text);
  Variant Embed(const Arguments& arguments);

  DocumentPtr document_;
  std::string item_;
};

class EmbeddedObject final : public NotesObjectOf<EmbeddedObject> {
 public:
  static constexpr std::string_view kName = "NotesEmbeddedObject";
  static std::span<const MemberOf<EmbeddedObject>> Members();

  EmbeddedObject(DocumentPtr document, EmbeddedFile file)
      : document_(std::move(document)), file_(std::move(file)) {}

 private:
  Variant Extract(const std::string& path);

  DocumentPtr document_;
  EmbeddedFile file_;
};

class DocumentObject final : public NotesObjectOf<DocumentObject> {
 public:
  static constexpr std::string_view kName = "NotesDocument";
  static std::span<const MemberOf<DocumentObject>> Members();

  // `account` sends it; none sends a person of the address book.
  DocumentObject(DocumentPtr document, std::optional<Account> account)
      : document_(std::move(document)), account_(std::move(account)) {}

  // The document that a client hands in. Throws CallError for anything else.
  static const DocumentState& In(const VARIANT& value);

 protected:
  // Every name that is no member's is an item's.
  void Learn(const std::string& name) override;
  std::size_t MemberCount() const override { return Members().size() + learnt_.size(); }
  const MemberFacts& Member(std::size_t index) const override;
  bool AlwaysAnswers(std::size_t index) const override;
  Variant Read(std::size_t index, const Arguments& arguments) override;
  void Write(std::size_t index, const Arguments& arguments, const VARIANT& value) override;

 private:
  struct Learnt {
    explicit Learnt(std::string itemName, DISPID id)
        : name(std::move(itemName)), facts(name, id, "Index", true) {}
    std::string name;
    MemberFacts facts;
  };

  Variant Values(const std::string& name);
  Variant ItemOrNothing(const std::string& name);
  Variant Replace(const std::string& name, const VARIANT& value);
  Variant Attachment(const std::string& name);
  Variant Save(bool markRead);
  Variant Mark(bool unread);
  Message Stored() const;

  DocumentPtr document_;
  std::optional<Account> account_;
  std::deque<Learnt> learnt_;
  bool sign_ = false;
  bool encrypt_ = false;
};

// As members give them: an array, and the text of rich text.
Variant ValuesOf(const Item& item);
Variant AttachmentsOf(const DocumentPtr& document);

}  // namespace desk
