#include "olemsg32/Attachments.h"

#include <filesystem>
#include <vector>

#include "olemsg32/Collection.h"

namespace desk {
namespace {

constexpr int kFileData = 1;
constexpr int kFileLink = 2;

int TypeOf(long type) {
  if (type != kFileData && type != kFileLink) throw MemberError(MapiError::kNoSupport);
  return static_cast<int>(type);
}

// What a source means is decided by the type that the attachment has by then.
void TakeSource(TakenAttachment& attachment, const std::string& source) {
  if (attachment.type == kFileLink) {
    attachment.source = source;
  } else if (!source.empty()) {
    TakeFile(attachment, source);
  }
}

}  // namespace

Variant AttachmentsObject::Item(const VARIANT& index) {
  const std::size_t place = PlaceOf(index, State()->attachments.size());
  return MakeResult<AttachmentObject>(*this, State(), State()->attachments[place]);
}

// Name, Position, Type, Source
Variant AttachmentsObject::Add(const Arguments& arguments) {
  TakenAttachment added;
  added.name = arguments.Text(0);
  added.position = static_cast<int>(arguments.Number(1, 0));
  added.type = TypeOf(arguments.Number(2, kFileData));
  TakeSource(added, arguments.Text(3));
  State()->attachments.push_back(
      std::make_shared<Part<TakenAttachment>>(Part<TakenAttachment>{std::move(added)}));
  return MakeResult<AttachmentObject>(*this, State(), State()->attachments.back());
}

Variant AttachmentsObject::Delete() {
  for (const auto& part : State()->attachments) part->gone = true;
  State()->attachments.clear();
  return {};
}

std::span<const MemberOf<AttachmentsObject>> AttachmentsObject::Members() {
  using Self = AttachmentsObject;
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](Self& o, const Arguments&) {
         return FromNumber(static_cast<long>(o.State()->attachments.size()));
       }},
      {"Item", 21, "Index |", [](Self& o, const Arguments& a) { return o.Item(a.At(0)); }},
      {"Add", 100, "Name Position Type Source",
       [](Self& o, const Arguments& a) { return o.Add(a); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
  };
  return members;
}

Variant AttachmentObject::WriteToFile(const std::string& path) {
  if (It().path.empty()) throw MemberError(MapiError::kNotFound);
  // std::filesystem::copy_file takes every two files for one here, and overwrites none.
  const std::filesystem::path target = PathFromUtf8(path);
  if (CopyFileW(It().path.c_str(), target.c_str(), FALSE) == FALSE) {
    throw MemberError(MapiError::kDiskError);
  }
  return {};
}

std::span<const MemberOf<AttachmentObject>> AttachmentObject::Members() {
  using Self = AttachmentObject;
  static const std::vector<Row> members{
      {"Name", 23, "", [](Self& o, const Arguments&) { return FromText(o.It().name); },
       [](Self& o, const Arguments&, const VARIANT& value) { o.It().name = TextOf(value); }},
      {"Type", 17, "", [](Self& o, const Arguments&) { return FromNumber(o.It().type); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         o.It().type = TypeOf(NumberOf(value));
       }},
      {"Position", 26, "", [](Self& o, const Arguments&) { return FromNumber(o.It().position); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         o.It().position = static_cast<int>(NumberOf(value));
       }},
      {"Source", 37, "", [](Self& o, const Arguments&) { return FromText(o.It().source); },
       [](Self& o, const Arguments&, const VARIANT& value) { TakeSource(o.It(), TextOf(value)); }},
      {"Index", 19, "",
       [](Self& o, const Arguments&) { return FromNumber(o.IndexIn(o.State()->attachments)); }},
      {"ReadFromFile", 127, "FileName |",
       [](Self& o, const Arguments& a) {
         TakeFile(o.It(), a.Text(0));
         return Variant();
       }},
      {"WriteToFile", 133, "FileName |",
       [](Self& o, const Arguments& a) { return o.WriteToFile(a.Text(0)); }},
      {"Delete", 106, "",
       [](Self& o, const Arguments&) { return o.RemoveFrom(o.State()->attachments); }},
  };
  return members;
}

}  // namespace desk
