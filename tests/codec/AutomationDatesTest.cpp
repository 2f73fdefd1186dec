#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "codec/AutomationDates.h"
#include "codec/DateFormat.h"

namespace quillon {
namespace {

TEST(AutomationDatesTest, DaysAreCalendarDatesAndBack) {
  const struct {
    double days;
    const char* text;
  } kCases[] = {
      {0, "1899-12-30 00:00:00"},
      {-1.25, "1899-12-29 06:00:00"},  // the time counts forward
      {1.5, "1899-12-31 12:00:00"},
      {36526, "2000-01-01 00:00:00"},
      {36585.999988426, "2000-02-29 23:59:59"},
      {36585.9999999, "2000-03-01 00:00:00"},  // rounded into the next day
      {46348.75, "2026-11-22 18:00:00"},
      {-657434, "0100-01-01 00:00:00"},
      {2958465.5, "9999-12-31 12:00:00"},
  };
  for (const auto& test : kCases) {
    const auto date = DateTimeOf({test.days});
    ASSERT_TRUE(date) << test.text;
    EXPECT_EQ(FormatDate(*date, "yyyy-mm-dd hh:nn:ss"), test.text);
    EXPECT_NEAR(AutomationDateOf(*date).days, test.days, 1e-6) << test.text;
  }
  for (const double days :
       {-657435.0, 2958466.0, 2958465.9999999, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(DateTimeOf({days})) << days;
  }
}

}  // namespace
}  // namespace quillon
