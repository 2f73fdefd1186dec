#include <gtest/gtest.h>

#include "core/FieldBytes.h"

namespace quillon {
namespace {

// Two bytes for each character beyond ASCII, the second of which looks like a letter.
class DoubleBytes final : public CodePage {
 public:
  std::string ToText(std::string_view bytes) const override { return std::string(bytes); }
  std::string ToBytes(std::string_view text) const override {
    return text.size() == 1 ? std::string(text) : "\x83\x41";
  }
};

TEST(FieldBytes, NoCharacterIsCutInTwo) {
  const DoubleBytes codePage;
  const std::string kana = "\xE3\x82\xA2";
  const struct {
    std::string text;
    std::size_t size;
    std::string expected;
  } kCases[] = {{"four", 5, "four"},
                {"four", 4, "fou"},
                {"a" + kana + kana, 6, "a\x83\x41\x83\x41"},
                {"a" + kana + kana, 5, "a\x83\x41"},
                {"a" + kana + kana, 4, "a\x83\x41"},
                {kana, 2, ""},
                {std::string("to\0be", 5), 9, "to"},
                {std::string(300, 'x'), 21, std::string(20, 'x')}};
  for (const auto& test : kCases) {
    EXPECT_EQ(test.expected, FieldBytes(codePage, test.text, test.size)) << test.text;
  }
}

}  // namespace
}  // namespace quillon
