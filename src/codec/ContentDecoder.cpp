#include "codec/ContentDecoder.h"

#include <span>

#include "codec/QuotedPrintable.h"
#include "codec/UuLines.h"
#include "codec/clsMIMEPart.h"

namespace quillon {

namespace {

constexpr std::size_t kBlock = 48U << 10U;
constexpr std::string_view kLineEnd = "\r\n";

std::span<const std::uint8_t> BytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Room for `size` more bytes at the end of a text.
std::uint8_t* Reserve(std::string& text, std::size_t size) {
  const auto used = text.size();
  text.resize(used + size);
  return reinterpret_cast<std::uint8_t*>(text.data() + used);
}

}  // namespace

bool DecodeUuLine(std::string_view line, std::string& out) {
  if (line.empty() || static_cast<std::uint8_t>(line[0]) == kUuEnd) return false;
  const auto length = UuLineLength(static_cast<std::uint8_t>(line[0]));
  if (length == 0) return false;
  const std::size_t groups = (length + 2) / 3;
  const auto used = out.size();
  DecodeUuGroups(BytesOf(line.substr(1)), groups, Reserve(out, groups * 3));
  out.resize(used + UuBytesKept(length));
  return true;
}

ContentDecoder::ContentDecoder(std::int16_t encoding, ByteSink& sink)
    : encoding_(encoding), sink_(sink) {}

void ContentDecoder::Line(std::string_view line, bool endsLine) {
  switch (encoding_) {
    case mime_encoding::kBase64:
      Base64Line(line, endsLine);
      break;
    case mime_encoding::kQuotedPrintable:
      QuotedPrintableLine(line, endsLine);
      break;
    default:
      PlainLine(line, endsLine);
      break;
  }
  if (out_.size() >= kBlock) Flush();
}

void ContentDecoder::StartLine() {
  if (breakPending_) out_ += kLineEnd;
  breakPending_ = false;
}

void ContentDecoder::PlainLine(std::string_view line, bool endsLine) {
  StartLine();
  out_ += line;
  breakPending_ = endsLine;
}

void ContentDecoder::QuotedPrintableLine(std::string_view line, bool endsLine) {
  StartLine();
  // What was held of a line is a few characters, or a run of blanks, which are passed on when there
  // are many.
  if (!held_.empty()) {
    held_ += line;
    line = held_;
  }
  const auto used = out_.size();
  auto* const room = Reserve(out_, line.size());
  if (endsLine) {
    bool softBreak = false;
    out_.resize(used + DecodeQuotedPrintableLine(BytesOf(line), room, softBreak));
    held_.clear();
    breakPending_ = !softBreak;
    return;
  }
  const auto cut = line.size() > kBlock ? line.size() : QuotedPrintableCut(BytesOf(line));
  out_.resize(used + DecodeQuotedPrintablePiece(BytesOf(line.substr(0, cut)), room));
  held_ = std::string(line.substr(cut));
}

void ContentDecoder::Base64Line(std::string_view line, bool endsLine) {
  held_ += line;
  if (endsLine) held_ += kLineEnd;
  if (held_.size() >= kBlock) DecodeBase64();
}

void ContentDecoder::DecodeBase64() {
  const auto used = out_.size();
  auto* const room = Reserve(out_, Base64Decoder::Capacity(held_.size()));
  out_.resize(used + base64_.Decode(BytesOf(held_), room));
  held_.clear();
}

void ContentDecoder::Finish(ContentEnd end) {
  if (encoding_ == mime_encoding::kBase64) {
    DecodeBase64();
    const auto used = out_.size();
    auto* const room = Reserve(out_, 3);
    out_.resize(used + base64_.Finish(room));
  } else if (!held_.empty()) {
    QuotedPrintableLine({}, true);
    breakPending_ = false;  // the line had no end
  }
  if (end == ContentEnd::Message) StartLine();
  Flush();
}

void ContentDecoder::Flush() {
  if (!out_.empty()) sink_.Append(out_);
  out_.clear();
}

}  // namespace quillon
