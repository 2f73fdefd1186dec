// The operations of UUCode that work on buffers.
#include "codec/UUCode.h"

#include <algorithm>
#include <array>

#include "codec/Base64.h"
#include "codec/QuotedPrintable.h"
#include "codec/UuFraming.h"
#include "codec/UuLines.h"

namespace quillon {
namespace {

// Where to write `size` bytes from `position` on; moves it.
uint8_t* Grow(UUCode::Bytes& output, size_t& position, size_t size) {
  if (output.size() < position + size) output.resize(position + size);
  uint8_t* const where = output.data() + position;
  position += size;
  return where;
}

bool Has(UUCode::ByteView input, size_t position, size_t count) {
  return position <= input.size() && count <= input.size() - position;
}

UUCode::ByteView WithoutLineEnd(UUCode::ByteView line) {
  if (!line.empty() && line.back() == '\n') line = line.first(line.size() - 1);
  if (!line.empty() && line.back() == '\r') line = line.first(line.size() - 1);
  return line;
}

void MapToValues(std::span<uint8_t> characters) {
  std::transform(characters.begin(), characters.end(), characters.begin(), Base64Value);
}

}  // namespace

void UUCode::GetHeaderInfoFromStream(ByteView stream, std::string& mode, std::string& fileName,
                                     ShortBool& result) {
  const auto begin = FindUuBegin({reinterpret_cast<const char*>(stream.data()), stream.size()})
                         .value_or(UuBegin());
  mode = begin.mode;
  fileName = begin.fileName;
  result = ToShortBool(!mode.empty());
}

void UUCode::EncodeStream(ByteView input, Bytes& output, ShortBool& result) {
  output.resize(UuEncodedSize(input.size()));
  EncodeUuLines(input, output.data());
  result = kTrue;
}

void UUCode::EncodeRec(ByteView input, Bytes& output, size_t& inputPosition, size_t& outputPosition,
                       uint8_t lengthCharacter, ShortBool& result) {
  const size_t bytes = (UuLineLength(lengthCharacter) + 2) / 3 * 3;
  result = ToShortBool(Has(input, inputPosition, bytes));
  if (result == kFalse) return;
  BestKernel().encodeUu(input.data() + inputPosition, bytes,
                        Grow(output, outputPosition, bytes / 3 * 4));
  inputPosition += bytes;
}

void UUCode::MIMEDecodeStream(ByteView input, Bytes& output, ShortBool& result) {
  Base64Decoder decoder;
  output.resize(Base64Decoder::Capacity(input.size()));
  size_t size = decoder.Decode(input, output.data());
  size += decoder.Finish(output.data() + size);
  output.resize(size);
  result = kTrue;
}

void UUCode::DecodeStream(ByteView line, Bytes& output, ShortBool& endSeen, ShortBool& result) {
  line = WithoutLineEnd(line);
  output.clear();
  endSeen = ToShortBool(!line.empty() && line[0] == kUuEnd);
  result = kTrue;
  if (line.empty() || endSeen == kTrue) return;
  size_t inputPosition = 1;
  size_t outputPosition = 0;
  const size_t length = UuLineLength(line[0]);
  DecodeRec(line, output, inputPosition, outputPosition, length, result);
  output.resize(UuBytesKept(length));
}

void UUCode::DecodeRec(ByteView input, Bytes& output, size_t& inputPosition, size_t& outputPosition,
                       size_t lineLength, ShortBool& result) {
  result = ToShortBool(inputPosition <= input.size());
  if (result == kFalse) return;
  const size_t groups = (lineLength + 2) / 3;
  DecodeUuGroups(input.subspan(inputPosition), groups, Grow(output, outputPosition, groups * 3));
  inputPosition += std::min(groups * 4, input.size() - inputPosition);
}

void UUCode::UUDecodeRec(std::string_view line, Bytes& output, ShortBool& endSeen,
                         ShortBool& result) {
  if (IsUuEnd(line)) {
    endSeen = kTrue;
    result = kTrue;
    return;
  }
  Bytes decoded;
  DecodeStream({reinterpret_cast<const uint8_t*>(line.data()), line.size()}, decoded, endSeen,
               result);
  output.insert(output.end(), decoded.begin(), decoded.end());
}

void UUCode::Base64DecodeRec(ByteView input, Bytes& output, size_t& inputPosition,
                             size_t& outputPosition, size_t count, ShortBool& result) {
  result = ToShortBool(count % 4 == 0 && Has(input, inputPosition, count));
  if (result == kFalse) return;
  const ByteView groups = input.subspan(inputPosition, count);
  uint8_t* out = Grow(output, outputPosition, count / 4 * 3);
  for (size_t at = 0; at < count; at += 4) {
    const size_t taken = BestKernel().decodeBase64(groups.data() + at, count - at, out);
    out += taken / 4 * 3;
    at += taken;
    if (at == count) break;
    std::array<uint8_t, 4> values{};
    std::copy_n(groups.begin() + static_cast<std::ptrdiff_t>(at), values.size(), values.begin());
    MapToValues(values);
    const std::array<uint8_t, 3> bytes = Base64Bytes(values);
    out = std::copy(bytes.begin(), bytes.end(), out);
  }
  inputPosition += count;
}

void UUCode::Base64DecodeLastRec(ByteView input, Bytes& output, size_t& inputPosition,
                                 size_t& outputPosition, ShortBool& result) {
  result = ToShortBool(inputPosition < input.size());
  if (result == kFalse) return;
  std::array<uint8_t, 4> values{'=', '=', '=', '='};
  const size_t count = std::min(values.size(), input.size() - inputPosition);
  std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(inputPosition), count, values.begin());
  MapToValues(values);
  auto* const padding = std::find(values.begin(), values.end(), kBase64Padding);
  const auto given = static_cast<size_t>(padding - values.begin());
  std::fill(padding, values.end(), uint8_t{0});
  const std::array<uint8_t, 3> bytes = Base64Bytes(values);
  const size_t size = given < 2 ? 0 : given - 1;
  std::copy_n(bytes.begin(), size, Grow(output, outputPosition, size));
  inputPosition += count;
}

void UUCode::Base64EncodeRec(ByteView input, Bytes& output, size_t& inputPosition,
                             size_t& outputPosition, size_t count, ShortBool& result) {
  result = ToShortBool(Has(input, inputPosition, count));
  if (result == kFalse) return;
  const size_t groups = (count + 2) / 3;
  const size_t whole = count / 3 * 3;
  uint8_t* const out = Grow(output, outputPosition, groups * 4);
  BestKernel().encodeBase64(input.data() + inputPosition, whole, out);
  if (whole != count) {
    std::array<uint8_t, 3> rest{};
    std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(inputPosition + whole), count - whole,
                rest.begin());
    BestKernel().encodeBase64(rest.data(), rest.size(), out + whole / 3 * 4);
  }
  inputPosition += count;
}

void UUCode::QPDecodeString(std::string_view line, std::string& output, ShortBool& softBreak,
                            ShortBool& result) {
  bool soft = false;
  output.resize(line.size());
  const size_t size =
      DecodeQuotedPrintableLine({reinterpret_cast<const uint8_t*>(line.data()), line.size()},
                                reinterpret_cast<uint8_t*>(output.data()), soft);
  output.resize(size);
  softBreak = ToShortBool(soft);
  result = kTrue;
}

}  // namespace quillon
