#include "internet/PartialMessage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <utility>

#include "codec/ContentField.h"
#include "core/Text.h"

namespace quillon {

namespace {

struct PartialField {
  std::string id;
  std::uint32_t number = 0;
  std::uint32_t total = 0;  // 0: not told, as only the last part has to
};

// 0 when it is no number of a part.
std::uint32_t PartNumber(const std::string& text) {
  const auto digits = Trim(text);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
  return isWhole && number <= PartialMessage::kMostParts ? number : 0;
}

std::optional<PartialField> ReadPartialField(const std::string& contentType,
                                             const TextReader& reader) {
  constexpr std::string_view kType = "message/partial";
  if (!EqualsIgnoreCase(Trim(contentType).substr(0, kType.size()), kType)) return std::nullopt;
  const auto field = ParseContentField(contentType, reader);
  PartialField found{field.Parameter("ID"), PartNumber(field.Parameter("NUMBER"))};
  const auto& total = field.Parameter("TOTAL");
  found.total = PartNumber(total);
  const bool isGood = EqualsIgnoreCase(field.value, kType) && !found.id.empty() &&
                      found.number != 0 && (total.empty() || found.number <= found.total);
  return isGood ? std::optional(std::move(found)) : std::nullopt;
}

std::string_view FieldNameOf(std::string_view line) {
  return Trim(line.substr(0, line.find(':')));
}

// RFC 2046, 5.2.2.1: what the enclosed message says goes before what encloses it.
bool BelongsToEnclosed(std::string_view name) {
  constexpr std::array<std::string_view, 4> kNames = {"Subject", "Message-ID", "Encrypted",
                                                      "MIME-Version"};
  constexpr std::string_view kContent = "Content-";
  return EqualsIgnoreCase(name.substr(0, kContent.size()), kContent) ||
         std::any_of(kNames.begin(), kNames.end(),
                     [&](std::string_view other) { return EqualsIgnoreCase(name, other); });
}

bool IsFieldLine(std::string_view line) {
  const auto name = FieldNameOf(line);
  return line.find(':') != std::string_view::npos && !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 127; });
}

}  // namespace

std::vector<const HeaderRecord*> PartsOf(const HeaderTable& table, const HeaderRecord& record,
                                         const TextReader& reader) {
  const auto own = ReadPartialField(record.contentType, reader);
  if (!own) return {};
  auto total = own->total;
  std::vector<const HeaderRecord*> parts(PartialMessage::kMostParts);
  parts[own->number - 1] = &record;
  for (const auto& other : table) {
    const auto field = ReadPartialField(other.contentType, reader);
    if (!field || field->id != own->id) continue;
    if (total == 0) total = field->total;
    if (field->total != 0 && field->total != total) return {};
    auto& place = parts[field->number - 1];
    if (place == nullptr) place = &other;
  }
  if (own->number > total) return {};
  parts.resize(total);
  const bool isWhole = std::find(parts.begin(), parts.end(), nullptr) == parts.end();
  return isWhole ? parts : std::vector<const HeaderRecord*>();
}

std::int32_t PartialMessage::OnMessageLine(std::string_view text, bool complete) {
  const bool starts = std::exchange(atLineStart_, complete);
  if (state_ == State::Content) return whole_.OnMessageLine(text, complete);
  if (starts && complete && text.empty()) return EndHeader();
  if (starts && !text.starts_with(' ') && !text.starts_with('\t')) {
    keeps_ = Keeps(text);
    if (state_ == State::Enclosed && !IsFieldLine(text)) {
      const auto failure = EndHeader();
      return failure != 0 ? failure : whole_.OnMessageLine(text, complete);
    }
  }
  return keeps_ ? whole_.OnMessageLine(text, complete) : 0;
}

bool PartialMessage::Keeps(std::string_view line) const {
  const bool ofEnclosed = BelongsToEnclosed(FieldNameOf(line));
  if (state_ == State::Enclosed) return ofEnclosed;
  return isFirst_ && !ofEnclosed && IsFieldLine(line);
}

std::int32_t PartialMessage::EndHeader() {
  if (state_ == State::Enclosing) {
    state_ = isFirst_ ? State::Enclosed : State::Content;
    return 0;
  }
  state_ = State::Content;
  return whole_.OnMessageLine({}, true);
}

std::int32_t PartialMessage::OnMessageEnd() {
  if (isFirst_ && state_ != State::Content) {  // the header is all that there is
    if (const auto failure = whole_.OnMessageLine({}, true); failure != 0) return failure;
  }
  isFirst_ = false;
  state_ = State::Enclosing;
  atLineStart_ = true;
  return --left_ == 0 ? whole_.OnMessageEnd() : 0;
}

}  // namespace quillon
