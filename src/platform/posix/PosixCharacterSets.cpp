// The character sets of iconv.
#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <map>
#include <memory>

#include "platform/Platform.h"
#include "ports/CharacterSets.h"

namespace quillon {
namespace {

struct SetRow {
  int codePage;
  const char* name;
};

// Of those that are not "CP" and the number.
constexpr SetRow kSets[] = {
    {10000, "MACINTOSH"}, {1361, "JOHAB"},        {20866, "KOI8-R"}, {21866, "KOI8-U"},
    {54936, "GB18030"},   {50225, "ISO-2022-KR"}, {65000, "UTF-7"},
};

std::string NameOf(int codePage) {
  for (const auto& row : kSets) {
    if (row.codePage == codePage) return row.name;
  }
  constexpr int kIso8859 = 28590;
  if (codePage > kIso8859 && codePage <= kIso8859 + 16) {
    return "ISO-8859-" + std::to_string(codePage - kIso8859);
  }
  return "CP" + std::to_string(codePage);
}

class Converter {
 public:
  explicit Converter(int codePage) : handle_(::iconv_open("UTF-8", NameOf(codePage).c_str())) {}
  ~Converter() {
    if (IsOpen()) ::iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::optional<std::string> Convert(std::string_view bytes) {
    if (!IsOpen()) return std::nullopt;
    ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string text;
    auto* input = const_cast<char*>(bytes.data());
    auto size = bytes.size();
    while (size > 0) {
      if (!Step(&input, size, text)) return std::nullopt;
    }
    // A character may be held back for an accent that could have followed.
    if (!Step(nullptr, size, text)) return std::nullopt;
    return text;
  }

 private:
  bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

  // As much as finds room.
  bool Step(char** input, std::size_t& size, std::string& text) {
    const auto used = text.size();
    text.resize(used + size + size / 2 + 64);
    auto* output = text.data() + used;
    auto room = text.size() - used;
    const auto result = ::iconv(handle_, input, &size, &output, &room);
    const bool good = result != static_cast<std::size_t>(-1) || errno == E2BIG;
    text.resize(text.size() - room);
    return good;
  }

  iconv_t handle_;
};

class IconvCharacterSets final : public CharacterSets {
 public:
  std::optional<std::string> ToText(std::string_view bytes, int codePage) const override {
    return converters_.try_emplace(codePage, codePage).first->second.Convert(bytes);
  }

 private:
  mutable std::map<int, Converter> converters_;
};

}  // namespace

std::unique_ptr<CharacterSets> MakeCharacterSets() {
  return std::make_unique<IconvCharacterSets>();
}

}  // namespace quillon
