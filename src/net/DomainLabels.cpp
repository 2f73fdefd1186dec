#include "net/DomainLabels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/Text.h"
#include "core/Utf8.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestLabel = 63;

// RFC 3492, section 5.
constexpr std::uint32_t kBase = 36;
constexpr std::uint32_t kLowestThreshold = 1;
constexpr std::uint32_t kHighestThreshold = 26;
constexpr std::uint32_t kSkew = 38;
constexpr std::uint32_t kDamp = 700;
constexpr std::uint32_t kInitialBias = 72;
constexpr std::uint32_t kInitialNumber = 0x80;

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

char32_t Lower(char32_t c) {
  const auto within = [c](char32_t first, char32_t last) { return c >= first && c <= last; };
  if (within('A', 'Z') || (within(0xC0, 0xDE) && c != 0xD7) || within(0x391, 0x3A9) ||
      within(0x410, 0x42F)) {
    return c + 0x20;
  }
  if (within(0x400, 0x40F)) return c + 0x50;
  // Pairs of a large and a small letter, the large one even or odd.
  if (within(0x100, 0x12F) || within(0x132, 0x137) || within(0x14A, 0x177)) return c | 1U;
  if (within(0x139, 0x148) || within(0x179, 0x17E)) return c % 2 == 1 ? c + 1 : c;
  return c;
}

char Digit(std::uint32_t value) {
  return static_cast<char>(value < 26 ? 'a' + value : '0' + (value - 26));
}

// Section 6.1.
std::uint32_t Adapt(std::uint32_t delta, std::uint32_t count, bool first) {
  delta = first ? delta / kDamp : delta / 2;
  delta += delta / count;
  std::uint32_t bias = 0;
  for (; delta > (kBase - kLowestThreshold) * kHighestThreshold / 2; bias += kBase) {
    delta /= kBase - kLowestThreshold;
  }
  return bias + (kBase - kLowestThreshold + 1) * delta / (delta + kSkew);
}

void AppendNumber(std::string& text, std::uint32_t number, std::uint32_t bias) {
  for (auto k = kBase;; k += kBase) {
    const auto threshold = k <= bias ? kLowestThreshold : std::min(k - bias, kHighestThreshold);
    if (number < threshold) break;
    text += Digit(threshold + (number - threshold) % (kBase - threshold));
    number = (number - threshold) / (kBase - threshold);
  }
  text += Digit(number);
}

// Section 6.3. The label is short enough that nothing overflows.
std::string Punycode(std::u32string_view label) {
  std::string text;
  for (const auto c : label) {
    if (c < kInitialNumber) text += static_cast<char>(c);
  }
  const auto basic = static_cast<std::uint32_t>(text.size());
  if (basic > 0) text += '-';
  std::uint32_t number = kInitialNumber;
  std::uint32_t delta = 0;
  auto bias = kInitialBias;
  for (auto handled = basic; handled < label.size();) {
    char32_t next = 0x10FFFF;
    for (const auto c : label) {
      if (c >= number) next = std::min(next, c);
    }
    delta += (next - number) * (handled + 1);
    number = next;
    for (const auto c : label) {
      if (c < number) ++delta;
      if (c != number) continue;
      AppendNumber(text, delta, bias);
      bias = Adapt(delta, handled + 1, handled == basic);
      delta = 0;
      ++handled;
    }
    ++delta;
    ++number;
  }
  return text;
}

std::optional<std::string> AsciiLabel(std::string_view label) {
  if (label.empty()) return std::nullopt;
  if (IsAscii(label)) return std::string(label);
  std::u32string characters;
  while (!label.empty()) {
    characters += Lower(TakeUtf8(label));
    // Each has a digit at least.
    if (characters.size() > kLongestLabel) return std::nullopt;
  }
  auto ascii = "xn--" + Punycode(characters);
  if (ascii.size() > kLongestLabel) return std::nullopt;
  return ascii;
}

}  // namespace

std::optional<std::string> AsciiDomain(std::string_view domain) {
  if (IsAscii(domain)) return std::string(domain);
  if (!IsUtf8(domain)) return std::nullopt;
  std::string ascii;
  for (const auto& label : Split(domain, ".")) {
    const auto one = AsciiLabel(label);
    if (!one) return std::nullopt;
    ascii.append(ascii.empty() ? "" : ".").append(*one);
  }
  return ascii;
}

}  // namespace quillon
