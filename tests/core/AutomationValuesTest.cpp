// What automation objects answer, as plain values.
#include <functional>
#include <gtest/gtest.h>

#include "core/AutomationValues.h"

namespace quillon {
namespace {

struct Nobody final : AutomationObject {
  AutomationValue Get(std::string_view, const AutomationArguments&) override { return {}; }
  void Put(std::string_view, const AutomationValue&) override {}
  AutomationValue Call(std::string_view, const AutomationArguments&) override { return {}; }
};

// What a conversion gives, or "mismatch".
template <typename Convert>
std::string Result(Convert convert, const AutomationValue& value) {
  try {
    return convert(value);
  } catch (const AutomationError& error) {
    EXPECT_EQ(error.Number(), kAutomationTypeMismatch);
    return "mismatch";
  }
}

TEST(AutomationValuesTest, ConvertAsAutomationDoes) {
  const struct {
    AutomationValue value;
    const char *text, *number, *real, *truth;
  } kCases[] = {
      {{}, "", "0", "0.000000", "0"},
      {AutomationMissing(), "", "0", "0.000000", "0"},
      {AutomationObjectPtr(), "", "0", "0.000000", "0"},
      {true, "True", "-1", "-1.000000", "1"},
      {7, "7", "7", "7.000000", "1"},
      {2.5, "2.5", "2", "2.500000", "1"},
      {3e9, "3000000000", "mismatch", "3000000000.000000", "1"},
      {AutomationDate{2.25}, "mismatch", "2", "2.250000", "1"},
      {" 12 ", " 12 ", "12", "12.000000", "1"},
      {"0", "0", "0", "0.000000", "0"},
      {"true", "true", "mismatch", "mismatch", "1"},
      {"False", "False", "mismatch", "mismatch", "0"},
      {"", "", "mismatch", "mismatch", "0"},
      {"Bob", "Bob", "mismatch", "mismatch", "mismatch"},
      {std::make_shared<Nobody>(), "mismatch", "mismatch", "mismatch", "mismatch"},
      {std::vector<AutomationValue>{1}, "mismatch", "mismatch", "mismatch", "mismatch"},
  };
  for (const auto& test : kCases) {
    const auto& value = test.value;
    EXPECT_EQ(Result([](const auto& v) { return TextOf(v); }, value), test.text) << test.text;
    EXPECT_EQ(Result([](const auto& v) { return std::to_string(NumberOf(v)); }, value), test.number)
        << test.text;
    EXPECT_EQ(Result([](const auto& v) { return std::to_string(RealOf(v)); }, value), test.real)
        << test.text;
    EXPECT_EQ(Result([](const auto& v) { return std::to_string(TruthOf(v)); }, value), test.truth)
        << test.text;
  }
}

TEST(AutomationValuesTest, ObjectsAreObjectsOrNothing) {
  const auto object = std::make_shared<Nobody>();
  EXPECT_EQ(ObjectOf(AutomationObjectPtr(object)), object);
  EXPECT_EQ(ObjectOf({}), nullptr);
  EXPECT_EQ(ObjectOf(AutomationMissing()), nullptr);
  EXPECT_THROW(ObjectOf("text"), AutomationError);
  EXPECT_THROW(ObjectOf(1), AutomationError);
}

}  // namespace
}  // namespace quillon
