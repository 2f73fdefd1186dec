// The character sets that iconv writes.
#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <map>

#include "platform/Platform.h"
#include "ports/CharacterEncoder.h"

namespace quillon {
namespace {

std::string SetName(int codePage) {
  constexpr int kIso8859 = 28590;
  if (codePage > kIso8859 && codePage <= kIso8859 + 16) {
    return "ISO-8859-" + std::to_string(codePage - kIso8859);
  }
  if (codePage == 20866) return "KOI8-R";
  if (codePage == 21866) return "KOI8-U";
  if (codePage == 54936) return "GB18030";
  return "CP" + std::to_string(codePage);
}

class IconvWriter {
 public:
  explicit IconvWriter(int codePage) : handle_(::iconv_open(SetName(codePage).c_str(), "UTF-8")) {}
  ~IconvWriter() {
    if (IsOpen()) ::iconv_close(handle_);
  }
  IconvWriter(const IconvWriter&) = delete;
  IconvWriter& operator=(const IconvWriter&) = delete;

  bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

  std::optional<std::string> Write(std::string_view text) {
    if (!IsOpen()) return std::nullopt;
    ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string bytes(text.size() + 16, '\0');
    auto* input = const_cast<char*>(text.data());
    auto left = text.size();
    auto* output = bytes.data();
    auto room = bytes.size();
    while (left > 0) {
      const auto result = ::iconv(handle_, &input, &left, &output, &room);
      // More than none: characters that iconv has replaced by others.
      if (result == 0) break;
      if (result != static_cast<std::size_t>(-1) || errno != E2BIG) return std::nullopt;
      const auto used = bytes.size() - room;
      bytes.resize(bytes.size() * 2);
      output = bytes.data() + used;
      room = bytes.size() - used;
    }
    bytes.resize(bytes.size() - room);
    return bytes;
  }

 private:
  iconv_t handle_;
};

class IconvEncoder final : public CharacterEncoder {
 public:
  bool Has(int codePage) const override { return WriterOf(codePage).IsOpen(); }
  std::optional<std::string> ToBytes(std::string_view text, int codePage) const override {
    return WriterOf(codePage).Write(text);
  }

 private:
  IconvWriter& WriterOf(int codePage) const {
    return writers_.try_emplace(codePage, codePage).first->second;
  }

  mutable std::map<int, IconvWriter> writers_;
};

}  // namespace

std::unique_ptr<CharacterEncoder> MakeCharacterEncoder() {
  return std::make_unique<IconvEncoder>();
}

}  // namespace quillon
