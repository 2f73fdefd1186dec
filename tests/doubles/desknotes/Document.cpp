#include "desknotes/Document.h"

#include <algorithm>

#include "core/Text.h"
#include "desknotes/Folders.h"

namespace desk {
namespace {

constexpr DISPID kFirstItem = 1000;

}  // namespace

const DocumentState& DocumentObject::In(const VARIANT& value) {
  const auto* document = dynamic_cast<DocumentObject*>(DispatchObject::In(value));
  if (document == nullptr) throw CallError(DISP_E_TYPEMISMATCH);
  return *document->document_;
}

void DocumentObject::Learn(const std::string& name) {
  learnt_.emplace_back(name, kFirstItem + static_cast<DISPID>(learnt_.size()));
}

const MemberFacts& DocumentObject::Member(std::size_t index) const {
  const std::size_t own = Members().size();
  return index < own ? NotesObjectOf::Member(index) : learnt_[index - own].facts;
}

bool DocumentObject::AlwaysAnswers(std::size_t index) const {
  return index < Members().size() && NotesObjectOf::AlwaysAnswers(index);
}

Variant DocumentObject::Read(std::size_t index, const Arguments& arguments) {
  const std::size_t own = Members().size();
  if (index < own) return NotesObjectOf::Read(index, arguments);
  Variant values = Values(learnt_[index - own].name);
  if (!arguments.Given(0)) return values;
  std::vector<Variant> list = ListOf(values.Get());
  const auto place = static_cast<std::size_t>(arguments.Number(0, 0));
  if (place >= list.size()) throw CallError(DISP_E_BADINDEX);
  return std::move(list[place]);
}

void DocumentObject::Write(std::size_t index, const Arguments& arguments, const VARIANT& value) {
  const std::size_t own = Members().size();
  if (index < own) {
    NotesObjectOf::Write(index, arguments, value);
  } else {
    Replace(learnt_[index - own].name, value);
  }
}

Variant DocumentObject::Values(const std::string& name) {
  const Item* item = document_->Find(name);
  return ValuesOf(item == nullptr ? Item{name, kText, {""}} : *item);
}

Variant DocumentObject::ItemOrNothing(const std::string& name) {
  const Item* item = document_->Find(name);
  if (item == nullptr) return Nothing();
  if (item->type == kRichText) return MakeResult<RichTextObject>(document_, item->name);
  return MakeResult<ItemObject>(document_, *item);
}

Variant DocumentObject::Replace(const std::string& name, const VARIANT& value) {
  std::vector<std::string> texts;
  long type = kText;
  for (const Variant& each : ListOf(value)) {
    if (each.Type() == VT_DATE) {
      type = kDates;
      texts.push_back(DateTextOf(DateOf(each.Get())));
    } else {
      if (each.Type() != VT_BSTR) type = kNumbers;
      texts.push_back(TextOf(each.Get()));
    }
  }
  document_->Replace(name, std::move(texts), type);
  return ItemOrNothing(name);
}

Variant DocumentObject::Attachment(const std::string& name) {
  const auto found = std::ranges::find_if(document_->files, [&](const EmbeddedFile& file) {
    return quillon::EqualsIgnoreCase(file.name, name);
  });
  return found == document_->files.end() ? Nothing()
                                         : MakeResult<EmbeddedObject>(document_, *found);
}

Message DocumentObject::Stored() const {
  std::optional<Message> message = TheStore().Read(document_->mailbox, document_->record.id);
  if (!message) throw Failed("Document has been deleted");
  return std::move(*message);
}

// Force, CreateResponse, MarkRead
Variant DocumentObject::Save(bool markRead) {
  if (markRead) document_->record.unread = false;
  SaveDocument(*document_);
  return FromFlag(true);
}

Variant DocumentObject::Mark(bool unread) {
  Message message = Stored();
  message.unread = unread;
  document_->record.unread = unread;
  TheStore().Change(document_->mailbox, message);
  return {};
}

std::span<const MemberOf<DocumentObject>> DocumentObject::Members() {
  using Self = DocumentObject;
  static const auto store = [](Self& o) -> DocumentState& { return *o.document_; };
  static const std::vector<Row> members{
      {"UniversalID", 1, "",
       [](Self& o, const Arguments&) { return FromText(UniversalId(store(o).record.id)); }},
      {"NoteID", 2, "",
       [](Self& o, const Arguments&) { return FromText(NoteIdOf(store(o).record.id)); }},
      {"IsValid", 3, "",
       [](Self& o, const Arguments&) { return FromFlag(IsStillThere(store(o))); }},
      {"IsDeleted", 4, "",
       [](Self& o, const Arguments&) { return FromFlag(!IsStillThere(store(o))); }},
      {"Created", 5, "",
       [](Self& o, const Arguments&) {
         return FromDateText(store(o).record.date).value_or(Variant());
       }},
      {"Items", 6, "",
       [](Self& o, const Arguments&) {
         std::vector<Variant> items;
         for (const Item& item : store(o).items) {
           items.push_back(MakeResult<ItemObject>(o.document_, item));
         }
         return FromList(std::move(items));
       }},
      {"HasItem", 7, "Name |",
       [](Self& o, const Arguments& a) { return FromFlag(store(o).Find(a.Text(0)) != nullptr); }},
      {"GetItemValue", 8, "Name |",
       [](Self& o, const Arguments& a) { return o.Values(a.Text(0)); }},
      {"GetFirstItem", 9, "Name |",
       [](Self& o, const Arguments& a) { return o.ItemOrNothing(a.Text(0)); }},
      {"ReplaceItemValue", 10, "Name Value |",
       [](Self& o, const Arguments& a) { return o.Replace(a.Text(0), a.At(1)); }},
      {"CreateRichTextItem", 11, "Name |",
       [](Self& o, const Arguments& a) {
         store(o).Replace(a.Text(0), {""}, kRichText);
         return MakeResult<RichTextObject>(o.document_, a.Text(0));
       }},
      {"HasEmbedded", 12, "",
       [](Self& o, const Arguments&) { return FromFlag(!store(o).files.empty()); }},
      {"EmbeddedObjects", 13, "",
       [](Self& o, const Arguments&) { return AttachmentsOf(o.document_); }},
      {"GetAttachment", 14, "Name |",
       [](Self& o, const Arguments& a) { return o.Attachment(a.Text(0)); }},
      {"SaveMessageOnSend", 15, "",
       [](Self& o, const Arguments&) { return FromFlag(store(o).keepWhenSent); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         store(o).keepWhenSent = FlagOf(value);
       }},
      {"SignOnSend", 16, "", [](Self& o, const Arguments&) { return FromFlag(o.sign_); },
       [](Self& o, const Arguments&, const VARIANT& value) { o.sign_ = FlagOf(value); }},
      {"EncryptOnSend", 17, "", [](Self& o, const Arguments&) { return FromFlag(o.encrypt_); },
       [](Self& o, const Arguments&, const VARIANT& value) { o.encrypt_ = FlagOf(value); }},
      {"Send", 18, "AttachForm |",
       [](Self& o, const Arguments&) {
         if (!o.account_) throw Failed("Document cannot be mailed");
         SendDocument(store(o), *o.account_);
         return Variant();
       }},
      {"Save", 19, "Force CreateResponse MarkRead",
       [](Self& o, const Arguments& a) { return o.Save(a.Flag(2, false)); }},
      {"Remove", 20, "Force |",
       [](Self& o, const Arguments&) {
         o.Stored();
         return FromFlag(TheStore().Remove(store(o).mailbox, store(o).record.id));
       }},
      {"GetRead", 21, "UserName",
       [](Self& o, const Arguments&) { return FromFlag(!o.Stored().unread); }},
      {"MarkRead", 22, "UserName", [](Self& o, const Arguments&) { return o.Mark(false); }},
      {"MarkUnread", 23, "UserName", [](Self& o, const Arguments&) { return o.Mark(true); }},
      {"PutInFolder", 24, "FolderName | CreateOnFail",
       [](Self& o, const Arguments& a) {
         const DocumentState& state = store(o);
         PutIn(state.mailbox, state.record.id,
               NamedFolder(state.mailbox, a.Text(0), a.Flag(1, true)));
         return Variant();
       }},
      {"RemoveFromFolder", 25, "FolderName |",
       [](Self& o, const Arguments& a) {
         const DocumentState& state = store(o);
         RemoveFrom(state.mailbox, state.record.id, NamedFolder(state.mailbox, a.Text(0), false));
         return Variant();
       }},
  };
  return members;
}

}  // namespace desk
