// The items of a document and its attachments.
#include <windows.h>
#include <cstdlib>

#include "core/Text.h"
#include "desknotes/Document.h"

namespace desk {
namespace {

constexpr long kEmbedAttachment = 1454;

Variant ValueOf(const std::string& text, long type) {
  if (type == kDates) return FromDateText(text).value_or(Variant());
  return type == kNumbers ? FromNumber(std::strtol(text.c_str(), nullptr, 10)) : FromText(text);
}

}  // namespace

Variant ValuesOf(const Item& item) {
  if (item.type == kRichText) return FromText(item.values.empty() ? "" : item.values[0]);
  std::vector<Variant> values;
  for (const std::string& text : item.values) values.push_back(ValueOf(text, item.type));
  return FromList(std::move(values));
}

Variant AttachmentsOf(const DocumentPtr& document) {
  std::vector<Variant> objects;
  for (const EmbeddedFile& file : document->files) {
    objects.push_back(MakeResult<EmbeddedObject>(document, file));
  }
  return objects.empty() ? Variant() : FromList(std::move(objects));
}

std::span<const MemberOf<ItemObject>> ItemObject::Members() {
  using Self = ItemObject;
  static const std::vector<Row> members{
      {"Name", 1, "", [](Self& o, const Arguments&) { return FromText(o.item_.name); }},
      {"Type", 2, "", [](Self& o, const Arguments&) { return FromNumber(o.item_.type); }},
      {"Text", 3, "",
       [](Self& o, const Arguments&) { return FromText(quillon::Join(o.item_.values, ";")); }},
      {"Values", 4, "", [](Self& o, const Arguments&) { return ValuesOf(o.item_); }},
  };
  return members;
}

Variant RichTextObject::Append(const std::string& text) {
  document_->Replace(item_, {Text() + text}, kRichText);
  return {};
}

// lClass, Class, Source, Name
Variant RichTextObject::Embed(const Arguments& arguments) {
  if (arguments.Number(0, 0) != kEmbedAttachment) throw Failed("Object type not supported");
  const std::string path = arguments.Text(2);
  auto taken = TakenFile::Of(path);
  if (!taken) throw Failed("File does not exist");
  const std::string source = path.substr(path.find_last_of("\\/:") + 1);
  document_->Embed(source, taken->Path(), taken);
  return MakeResult<EmbeddedObject>(document_, document_->files.back());
}

std::span<const MemberOf<RichTextObject>> RichTextObject::Members() {
  using Self = RichTextObject;
  static const auto text = [](Self& o, const Arguments&) { return FromText(o.Text()); };
  static const std::vector<Row> members{
      {"Name", 1, "", [](Self& o, const Arguments&) { return FromText(o.item_); }},
      {"Type", 2, "", [](Self&, const Arguments&) { return FromNumber(kRichText); }},
      {"Text", 3, "", text},
      {"Values", 4, "", text},
      {"GetFormattedText", 5, "TabStrip LineLen", text},
      {"AppendText", 6, "Text |", [](Self& o, const Arguments& a) { return o.Append(a.Text(0)); }},
      {"AddNewLine", 7, "Count ForceParagraph",
       [](Self& o, const Arguments& a) {
         std::string lines;
         for (long i = 0; i < a.Number(0, 1); ++i) lines += "\r\n";
         return o.Append(lines);
       }},
      {"EmbedObject", 8, "Type Class Source | Name",
       [](Self& o, const Arguments& a) { return o.Embed(a); }},
      {"EmbeddedObjects", 9, "",
       [](Self& o, const Arguments&) { return AttachmentsOf(o.document_); }},
  };
  return members;
}

Variant EmbeddedObject::Extract(const std::string& path) {
  const std::filesystem::path target = PathFromUtf8(path);
  if (CopyFileW(file_.path.c_str(), target.c_str(), FALSE) == FALSE) {
    throw Failed("Unable to write file");
  }
  return {};
}

std::span<const MemberOf<EmbeddedObject>> EmbeddedObject::Members() {
  using Self = EmbeddedObject;
  static const std::vector<Row> members{
      {"Name", 1, "", [](Self& o, const Arguments&) { return FromText(o.file_.name); }},
      {"Source", 2, "", [](Self& o, const Arguments&) { return FromText(o.file_.source); }},
      {"Type", 3, "", [](Self&, const Arguments&) { return FromNumber(kEmbedAttachment); }},
      {"FileSize", 4, "",
       [](Self& o, const Arguments&) {
         return FromNumber(static_cast<long>(std::filesystem::file_size(o.file_.path)));
       }},
      {"ExtractFile", 5, "Path |",
       [](Self& o, const Arguments& a) { return o.Extract(a.Text(0)); }},
  };
  return members;
}

}  // namespace desk
