#include "codec/RtfCompressed.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <zlib.h>

namespace quillon {

namespace {

constexpr std::uint32_t kCompressed = 0x75465A4C;
constexpr std::uint32_t kStored = 0x414C454D;
constexpr std::uint64_t kHeaderBehindSize = 12;
constexpr std::size_t kDictionarySize = 4096;

// What the dictionary holds at first.
constexpr std::string_view kPreset =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}"
    "{\\f0\\fnil \\froman \\fswiss \\fmodern \\fscript \\fdecor "
    "MS Sans SerifSymbolArialTimes New RomanCourier"
    "{\\colortbl\\red0\\green0\\blue0\r\n\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
static_assert(kPreset.size() == 207);

// The CRC-32 that everybody has, without its complements.
class Checksum final : public ByteSink {
 public:
  void Append(std::string_view bytes) override {
    value_ = crc32(value_, reinterpret_cast<const Bytef*>(bytes.data()),
                   static_cast<uInt>(bytes.size()));
  }
  std::uint32_t Value() const { return ~static_cast<std::uint32_t>(value_); }

 private:
  uLong value_ = 0xFFFFFFFFU;
};

class Expander {
 public:
  explicit Expander(ByteSink& sink) : sink_(sink) {
    kPreset.copy(dictionary_.data(), kPreset.size());
  }

  // Returns how many bytes there were.
  std::uint64_t Run(FileBytes& bytes) {
    while (bytes.Left() > 0) {
      for (unsigned control = bytes.Byte() | 0x100U; control != 1; control >>= 1U) {
        if ((control & 1U) == 0) {
          if (bytes.Left() == 0) break;
          Put(static_cast<char>(bytes.Byte()));
        } else if (!Repeat(bytes)) {
          Flush();
          return count_;
        }
      }
    }
    Flush();
    return count_;
  }

 private:
  // False at the end: a repetition that begins where the next byte goes.
  bool Repeat(FileBytes& bytes) {
    const unsigned high = bytes.Byte();
    const unsigned word = high << 8U | bytes.Byte();
    std::size_t from = word >> 4U;
    if (bytes.Failed() || from == next_) return false;
    for (auto left = (word & 15U) + 2; left > 0; --left) {
      Put(dictionary_[from]);
      from = (from + 1) % kDictionarySize;
    }
    return true;
  }

  void Put(char c) {
    dictionary_[next_] = c;
    next_ = (next_ + 1) % kDictionarySize;
    ++count_;
    out_ += c;
    if (out_.size() >= kDictionarySize) Flush();
  }

  void Flush() {
    if (!out_.empty()) sink_.Append(out_);
    out_.clear();
  }

  ByteSink& sink_;
  std::array<char, kDictionarySize> dictionary_{};
  std::size_t next_ = kPreset.size();
  std::uint64_t count_ = 0;
  std::string out_;
};

}  // namespace

bool DecompressRtf(FileBytes bytes, ByteSink& sink) {
  const std::uint64_t size = bytes.Number32();
  const std::uint64_t rawSize = bytes.Number32();
  const auto type = bytes.Number32();
  const auto checksum = bytes.Number32();
  if (bytes.Failed() || size < kHeaderBehindSize) return false;
  const bool isCut = size - kHeaderBehindSize > bytes.Left();
  auto content = isCut ? bytes : bytes.Take(size - kHeaderBehindSize);
  if (type == kStored) {
    auto text = content.Take(rawSize);
    text.CopyTo(sink);
    return !content.Failed() && !text.Failed();
  }
  if (type != kCompressed) return false;
  Checksum sum;
  FileBytes(content).CopyTo(sum);
  const auto count = Expander(sink).Run(content);
  return !isCut && !content.Failed() && count == rawSize && sum.Value() == checksum;
}

}  // namespace quillon
