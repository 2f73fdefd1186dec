#include "codec/Base64Word.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "codec/Base64.h"

namespace quillon {
namespace {

uint8_t Byte(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<uint8_t>(bytes[index]) : uint8_t{0};
}

}  // namespace

std::string Base64Word(std::string_view bytes) {
  std::string word;
  word.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto group =
        static_cast<uint32_t>(Byte(bytes, i) << 16 | Byte(bytes, i + 1) << 8 | Byte(bytes, i + 2));
    for (int shift = 18; shift >= 0; shift -= 6) {
      word += static_cast<char>(Base64Character(static_cast<uint8_t>(group >> shift & 63)));
    }
  }
  const std::size_t padding = (3 - bytes.size() % 3) % 3;
  word.replace(word.size() - padding, padding, padding, '=');
  return word;
}

std::optional<std::string> BytesOfBase64Word(std::string_view word) {
  if (word.size() % 4 != 0) return std::nullopt;
  const auto last = word.find_last_not_of('=');
  const std::size_t characters = last == std::string_view::npos ? 0 : last + 1;
  const std::size_t padding = word.size() - characters;
  if (padding > 2) return std::nullopt;
  std::string bytes;
  bytes.reserve(word.size() / 4 * 3);
  for (std::size_t i = 0; i < characters; i += 4) {
    std::array<uint8_t, 4> values{};
    for (std::size_t k = 0; k < 4 && i + k < characters; ++k) {
      const auto character = static_cast<uint8_t>(word[i + k]);
      values[k] = Base64Value(character);
      // A byte outside the alphabet stands for itself, and may be as small as a value.
      if (values[k] > 63 || Base64Character(values[k]) != character) return std::nullopt;
    }
    for (const uint8_t byte : Base64Bytes(values)) bytes += static_cast<char>(byte);
  }
  const auto unused = bytes.end() - static_cast<std::ptrdiff_t>(padding);
  if (std::any_of(unused, bytes.end(), [](char c) { return c != 0; })) return std::nullopt;
  bytes.erase(unused, bytes.end());
  return bytes;
}

}  // namespace quillon
