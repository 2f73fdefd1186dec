#include <gtest/gtest.h>

#include "core/ServerError.h"
#include "core/Value.h"

namespace quillon {
namespace {

std::string Int16Of(const Value& value) {
  try {
    return std::to_string(ToInt16(value));
  } catch (const ConversionError& error) {
    return error.what();
  }
}

TEST(Value, NumbersAreReadAsAutomationReadsThem) {
  const struct {
    Value value;
    const char* expected;
  } kCases[] = {
      {std::monostate{}, "0"},
      {NullValue{}, "type mismatch"},
      {true, "-1"},
      {0.5, "0"},
      {1.5, "2"},
      {2.5, "2"},
      {-1.5, "-2"},
      {32767.4, "32767"},
      {32767.5, "overflow"},
      {std::int32_t{-32769}, "overflow"},
      {std::string(" -1 "), "-1"},
      {std::string("+12"), "12"},
      {std::string("1.5e1"), "15"},
      {std::string("&H7f"), "127"},
      {std::string("&O17"), "15"},
      {std::string("&HFFFFFFFF"), "-1"},
      {std::string("1e999"), "overflow"},
      {std::string(""), "type mismatch"},
      {std::string("yes"), "type mismatch"},
      {std::string("1 2"), "type mismatch"},
      {std::string("inf"), "type mismatch"},
      {std::string("+-1"), "type mismatch"},
      {std::string("&H"), "type mismatch"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.expected, Int16Of(test.value));
}

TEST(Value, TextOfNumbersIsWhatAScriptWouldPrint) {
  EXPECT_EQ("", ToText(std::monostate{}));
  EXPECT_EQ("True", ToText(true));
  EXPECT_EQ("3.05", ToText(3.05F));
  EXPECT_EQ("0.1", ToText(0.1));
  EXPECT_EQ("-50", ToText(-50.0F));
  EXPECT_THROW(ToText(NullValue{}), ConversionError);
}

}  // namespace
}  // namespace quillon
