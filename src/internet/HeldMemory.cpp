#include "internet/HeldMemory.h"

#include <algorithm>
#include <string>

namespace quillon {

namespace {

constexpr std::size_t kIndexEntry = 64;

}  // namespace

std::size_t HeldMemory(std::string_view bytes) {
  const auto others =
      static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0x80U) != 0;
      }));
  // An encoded word of four characters may be three bytes beyond ASCII.
  if (bytes.find("=?") != std::string_view::npos) return bytes.size() * 9 / 4 + 2 * others;
  return bytes.size() + 2 * others;
}

std::size_t HeldMemory(const HeaderRecord& record) {
  std::size_t size = sizeof(HeaderRecord) + kIndexEntry;
  for (const auto member : kHeaderTexts) {
    const auto& text = record.*member;
    if (text.capacity() == std::string().capacity()) continue;  // it stands in the record
    size += std::max(text.capacity(), HeldMemory(std::string_view(text)));
  }
  return size;
}

}  // namespace quillon
