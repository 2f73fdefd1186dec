#include "olemsg32/Fields.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "core/Text.h"
#include "olemsg32/Collection.h"

namespace desk {

struct TagRow {
  std::uint32_t tag;
  Variant (*get)(const Message&);
  void (*put)(Message&, const VARIANT&);  // null: it cannot be changed
};

namespace {

int InRange(const VARIANT& value, long highest) {
  const long number = NumberOf(value);
  if (number < 0 || number > highest) throw MemberError(MapiError::kInvalidParameter);
  return static_cast<int>(number);
}

template <auto Place>
constexpr TagRow TextRow(std::uint32_t tag) {
  return {tag, [](const Message& m) { return FromText(m.*Place); },
          [](Message& m, const VARIANT& value) { m.*Place = TextOf(value); }};
}
template <auto Place>
constexpr TagRow FlagRow(std::uint32_t tag) {
  return {tag, [](const Message& m) { return FromFlag(m.*Place); },
          [](Message& m, const VARIANT& value) { m.*Place = FlagOf(value); }};
}
template <auto Place>
constexpr TagRow SetByOthersRow(std::uint32_t tag) {
  return {tag, [](const Message& m) { return FromText(m.*Place); }, nullptr};
}

constexpr std::array kTags{
    TextRow<&Message::messageClass>(0x001A001E),
    TextRow<&Message::subject>(0x0037001E),
    TextRow<&Message::conversationTopic>(0x0070001E),
    TextRow<&Message::text>(0x1000001E),
    FlagRow<&Message::delivery>(0x0023000B),
    FlagRow<&Message::receipt>(0x0029000B),
    SetByOthersRow<&Message::senderName>(0x0C1A001E),
    SetByOthersRow<&Message::senderAddress>(0x0C1F001E),
    TagRow{0x00170003, [](const Message& m) { return FromNumber(m.importance); },
           [](Message& m, const VARIANT& value) { m.importance = ImportanceOf(value); }},
    TagRow{0x00360003, [](const Message& m) { return FromNumber(m.sensitivity); },
           [](Message& m, const VARIANT& value) { m.sensitivity = InRange(value, 3); }},
};

const TagRow* FindTag(std::uint32_t tag) {
  const auto* row = std::ranges::find(kTags, tag, &TagRow::tag);
  return row == kTags.end() ? nullptr : row;
}

std::string NameOfTag(std::uint32_t tag) {
  std::array<char, 16> name{};
  std::snprintf(name.data(), name.size(), "0x%08lX", static_cast<unsigned long>(tag));
  return name.data();
}

// The type of automation for the type in a tag.
VARTYPE TypeOfTag(std::uint32_t tag) {
  switch (tag & 0xFFFFU) {
    case 0x0002:
      return VT_I2;
    case 0x0003:
      return VT_I4;
    case 0x0005:
      return VT_R8;
    case 0x000B:
      return VT_BOOL;
    case 0x001E:
      return VT_BSTR;
    case 0x0040:
      return VT_DATE;
    default:
      throw MemberError(MapiError::kInvalidParameter);
  }
}

std::string StoredValue(const VARIANT& value, VARTYPE type) {
  switch (type) {
    case VT_BOOL:
      return FlagOf(value) ? "True" : "False";
    case VT_DATE:
      return DateTextOf(DateOf(value));
    case VT_I2:
    case VT_I4:
      return std::to_string(NumberOf(value));
    case VT_R8:
    case VT_BSTR:
      return TextOf(value);
    default:
      throw MemberError(MapiError::kInvalidParameter);
  }
}

Variant ValueOf(const Field& field) {
  const Variant text = FromText(field.value);
  switch (field.type) {
    case VT_BOOL:
      return FromFlag(field.value == "True");
    case VT_I2:
    case VT_I4:
      return FromNumber(NumberOf(text.Get()));
    case VT_DATE: {
      std::optional<Variant> date = FromDateText(field.value);
      return date ? std::move(*date) : Variant();
    }
    default:
      return FromText(field.value);
  }
}

bool IsTag(const VARIANT& asked) {
  return V_VT(&asked) != VT_BSTR && (NumberOf(asked) < 0 || NumberOf(asked) > 0xFFFF);
}

std::uint32_t TagOf(const VARIANT& asked) {
  return static_cast<std::uint32_t>(NumberOf(asked));
}

std::shared_ptr<Part<Field>> FindNamed(const MessageState& state, std::string_view name) {
  const auto found = std::ranges::find_if(state.fields, [&](const auto& part) {
    return quillon::EqualsIgnoreCase(part->record.name, name);
  });
  return found == state.fields.end() ? nullptr : *found;
}

}  // namespace

int ImportanceOf(const VARIANT& value) {
  return InRange(value, 2);
}

// A number from 1, a tag, or a name.
Variant FieldsObject::Item(const VARIANT& asked) {
  const Parts<Field>& parts = State()->fields;
  if (!IsTag(asked)) {
    const std::size_t place =
        PlaceOf(asked, parts.size(), [&](std::size_t i) { return parts[i]->record.name; });
    return MakeResult<FieldObject>(*this, State(), parts[place]);
  }
  if (const TagRow* row = FindTag(TagOf(asked))) return MakeResult<TagObject>(*this, State(), *row);
  const auto part = FindNamed(*State(), NameOfTag(TagOf(asked)));
  if (part == nullptr) throw MemberError(MapiError::kNotFound);
  return MakeResult<FieldObject>(*this, State(), part);
}

// Either (tag, value) or (name, type, value).
Variant FieldsObject::Add(const Arguments& arguments) {
  const bool byTag = IsTag(arguments.At(0));
  if (byTag) {
    if (const TagRow* row = FindTag(TagOf(arguments.At(0)))) {
      if (row->put == nullptr) throw MemberError(MapiError::kNoAccess);
      row->put(State()->record, arguments.At(1));
      return MakeResult<TagObject>(*this, State(), *row);
    }
  }
  Field added;
  added.name = byTag ? NameOfTag(TagOf(arguments.At(0))) : arguments.Text(0);
  const auto type = byTag ? TypeOfTag(TagOf(arguments.At(0)))
                          : static_cast<VARTYPE>(arguments.Number(1, VT_BSTR));
  added.type = type;
  const std::size_t place = byTag ? 1 : 2;
  if (arguments.Given(place)) added.value = StoredValue(arguments.At(place), type);
  auto part = FindNamed(*State(), added.name);
  if (part == nullptr) {
    part = std::make_shared<Part<Field>>();
    State()->fields.push_back(part);
  }
  part->record = added;
  return MakeResult<FieldObject>(*this, State(), part);
}

Variant FieldsObject::Delete() {
  for (const auto& part : State()->fields) part->gone = true;
  State()->fields.clear();
  return {};
}

std::span<const MemberOf<FieldsObject>> FieldsObject::Members() {
  using Self = FieldsObject;
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](Self& o, const Arguments&) {
         return FromNumber(static_cast<long>(o.State()->fields.size()));
       }},
      {"Item", 21, "Index | PropsetID",
       [](Self& o, const Arguments& a) { return o.Item(a.At(0)); }},
      {"Add", 100, "Name Class | Value PropsetID",
       [](Self& o, const Arguments& a) { return o.Add(a); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
  };
  return members;
}

std::span<const MemberOf<FieldObject>> FieldObject::Members() {
  using Self = FieldObject;
  static const std::vector<Row> members{
      {"Name", 23, "", [](Self& o, const Arguments&) { return FromText(o.It().name); }},
      {"Type", 17, "", [](Self& o, const Arguments&) { return FromNumber(o.It().type); }},
      {"ID", 14, "",
       [](Self& o, const Arguments&) {
         // That of a name is none that means anything elsewhere.
         return FromNumber(static_cast<long>(std::strtoul(o.It().name.c_str(), nullptr, 0)));
       }},
      {"Index", 19, "",
       [](Self& o, const Arguments&) { return FromNumber(o.IndexIn(o.State()->fields)); }},
      {"Value", 43, "", [](Self& o, const Arguments&) { return ValueOf(o.It()); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         o.It().value = StoredValue(value, static_cast<VARTYPE>(o.It().type));
       }},
      {"Delete", 106, "",
       [](Self& o, const Arguments&) { return o.RemoveFrom(o.State()->fields); }},
  };
  return members;
}

std::span<const MemberOf<TagObject>> TagObject::Members() {
  using Self = TagObject;
  static const std::vector<Row> members{
      {"Name", 23, "", [](Self&, const Arguments&) { return FromText(""); }},
      {"ID", 14, "",
       [](Self& o, const Arguments&) { return FromNumber(static_cast<long>(o.row_.tag)); }},
      {"Type", 17, "", [](Self& o, const Arguments&) { return FromNumber(TypeOfTag(o.row_.tag)); }},
      {"Value", 43, "", [](Self& o, const Arguments&) { return o.row_.get(o.State()->record); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         if (o.row_.put == nullptr) throw MemberError(MapiError::kNoAccess);
         o.row_.put(o.State()->record, value);
       }},
  };
  return members;
}

}  // namespace desk
