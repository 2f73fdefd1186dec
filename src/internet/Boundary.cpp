#include "internet/Boundary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillon {

namespace {

constexpr std::string_view kOuterPart = "-Quillon-Next-Part-7c15e9a80b42";
constexpr std::string_view kInnerPart = "-Quillon-Alternative-7c15e9a80b42";
constexpr std::string_view kRelatedPart = "-Quillon-Related-7c15e9a80b42";
constexpr std::size_t kLetters = 26;
constexpr std::size_t kDigits = 9;

// One pass over the text, however often it holds the fixed part.
class Occurrences {
 public:
  Occurrences(std::string_view text, std::string_view fixedPart) {
    for (auto at = text.find(fixedPart, 1); at != std::string_view::npos;
         at = text.find(fixedPart, at + 1)) {
      const char letter = text[at - 1];
      if (letter < 'A' || letter > 'Z') continue;
      letters_[static_cast<std::size_t>(letter - 'A')] = true;
      if (letter == 'Z') AddNumber(text.substr(at + fixedPart.size(), kDigits));
    }
  }

  std::size_t FirstFreeLetter() const {
    return static_cast<std::size_t>(std::find(letters_.begin(), letters_.end(), false) -
                                    letters_.begin());
  }

  std::uint32_t FirstFreeNumber() {
    std::sort(numbers_.begin(), numbers_.end());
    std::uint32_t free = 0;
    for (const auto number : numbers_) {
      if (number == free) ++free;
    }
    return free;
  }

 private:
  void AddNumber(std::string_view digits) {
    std::uint32_t number = 0;
    const auto* const end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, number);
    if (parsed.ec == std::errc() && digits.size() == kDigits && parsed.ptr == end) {
      numbers_.push_back(number);
    }
  }

  std::array<bool, kLetters> letters_{};
  std::vector<std::uint32_t> numbers_;  // behind "Z" and the fixed part
};

}  // namespace

std::string ChooseBoundary(std::string_view text, std::string_view fixedPart) {
  if (text.size() <= fixedPart.size()) return "A" + std::string(fixedPart);
  Occurrences occurrences(text, fixedPart);
  const auto letter = occurrences.FirstFreeLetter();
  if (letter < kLetters) return static_cast<char>('A' + letter) + std::string(fixedPart);
  const auto number = std::to_string(occurrences.FirstFreeNumber());
  return "Z" + std::string(fixedPart) + std::string(kDigits - number.size(), '0') + number;
}

std::string OuterBoundary(std::string_view text) {
  return ChooseBoundary(text, kOuterPart);
}

std::string InnerBoundary(std::string_view text) {
  return ChooseBoundary(text, kInnerPart);
}

std::string RelatedBoundary(std::string_view text) {
  return ChooseBoundary(text, kRelatedPart);
}

}  // namespace quillon
