#include "codec/UuFileDecoder.h"

#include "codec/UuLines.h"

namespace quillon {
namespace {

// The longest line that UuLineLength can ask for.
constexpr size_t kMostLineBytes = 129;

std::string_view TextOf(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool SkipRestOfLine(LineReader& reader) {
  std::span<const uint8_t> piece;
  bool endsLine = false;
  while (!endsLine && reader.Next(piece, endsLine)) {
  }
  return !reader.Failed();
}

}  // namespace

std::optional<UuBegin> UuFileDecoder::FindBegin(LineReader& reader) {
  std::span<const uint8_t> line;
  bool wholeLine = true;
  bool atLineStart = true;
  while (reader.Next(line, wholeLine)) {
    if (atLineStart && wholeLine) {
      if (auto begin = ParseUuBegin(TextOf(line))) return begin;
    }
    atLineStart = wholeLine;
  }
  return std::nullopt;
}

bool UuFileDecoder::Decode(LineReader& reader, bool onlyDataLines) {
  while (!ended_ && output_.Good()) {
    if (!base64_) DecodeFullLines(reader);
    std::span<const uint8_t> line;
    bool wholeLine = true;
    if (!reader.Next(line, wholeLine)) break;
    if (base64_) {
      ended_ = TextOf(line).starts_with("====");
      if (!ended_) DecodeBase64(line);
    } else {
      if (!onlyDataLines || IsUuEnd(TextOf(line)) || LooksLikeUuData(TextOf(line)))
        DecodeLine(line);
      if (!wholeLine && !SkipRestOfLine(reader)) break;
    }
  }
  return !reader.Failed() && output_.Good();
}

void UuFileDecoder::DecodeFullLines(LineReader& reader) {
  const std::span<const uint8_t> text = reader.Buffered();
  size_t written = 0;
  reader.Skip(DecodeFullUuLines(text, output_.Reserve(text.size()), written));
  output_.Commit(written);
}

void UuFileDecoder::DecodeLine(std::span<const uint8_t> line) {
  if (line.empty()) return;
  if (line[0] == kUuEnd || IsUuEnd(TextOf(line))) {
    ended_ = true;
    return;
  }
  const size_t length = UuLineLength(line[0]);
  DecodeUuGroups(line.subspan(1), (length + 2) / 3, output_.Reserve(kMostLineBytes));
  output_.Commit(UuBytesKept(length));
}

void UuFileDecoder::DecodeBase64(std::span<const uint8_t> text) {
  uint8_t* const out = output_.Reserve(Base64Decoder::Capacity(text.size()));
  output_.Commit(base64Decoder_.Decode(text, out));
}

void UuFileDecoder::Finish() {
  output_.Commit(base64Decoder_.Finish(output_.Reserve(3)));
}

}  // namespace quillon
