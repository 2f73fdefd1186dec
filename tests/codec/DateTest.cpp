#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "codec/DateFormat.h"
#include "codec/DateTime.h"
#include "codec/HeaderDate.h"
#include "core/Text.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

// The cells of a row of a Markdown table, without the backticks around them.
std::vector<std::string> Cells(std::string_view row) {
  std::vector<std::string> cells = Split(row, "|");
  for (std::string& cell : cells) {
    std::string_view text = Trim(cell);
    if (text.size() > 1 && text.front() == '`') text = text.substr(1, text.size() - 2);
    cell = std::string(text);
  }
  return cells;
}

TEST(DateTest, TheDocumentedFormats) {
  const auto files = MakeFileSystem();
  const std::string document =
      testing::ContentOf(*files, std::string(QUILLON_TESTS_DIR) + "/../docs/dates.md");
  std::vector<std::string> dates;
  int rows = 0;
  for (const std::string& line : Split(document, "\n")) {
    const std::vector<std::string> cells = Cells(line);
    if (cells.size() != 5) continue;
    if (cells[1] == "Format") {
      dates = {cells[2], cells[3]};
    } else if (!cells[1].starts_with("---")) {
      ASSERT_EQ(dates.size(), 2U);
      for (size_t i = 0; i < dates.size(); ++i) {
        EXPECT_EQ(ConvertHeaderDate(dates[i], cells[1]), cells[i + 2]) << cells[1];
      }
      ++rows;
    }
  }
  EXPECT_GT(rows, 40);
}

TEST(DateTest, DatesAsSendersWriteThem) {
  const std::vector<std::pair<std::string_view, std::string_view>> cases = {
      {"Tue, 14 Nov 2026 22:03:59 +0000", "2026-11-14 22:03:59"},
      {"14 Nov 2026 22:03:59 +0000", "2026-11-14 22:03:59"},
      {"  Sat,  4 nov 26 2:03:59, GMT (a remark)", "2026-11-04 02:03:59"},
      {"4 Nov 2026 22:03 -0500", "2026-11-04 22:03:00"},
      {"4 Nov 2026", "2026-11-04 00:00:00"},
      {"4 Nov 2026 10:03PM", "2026-11-04 22:03:00"},
      {"29 Feb 2000 00:00:00", "2000-02-29 00:00:00"},
      {"1 Jan 1929 00:00:00", "2029-01-01 00:00:00"},
      {"1 Jan 2030 00:00:00", "1930-01-01 00:00:00"},
      {"1 Jan 126 00:00:00", "2026-01-01 00:00:00"},
      // Not dates: kept as they are.
      {"", ""},
      {"  soon ", "soon"},
      {"Tue, 14 November 2026 22:03:59", "Tue, 14 November 2026 22:03:59"},
      {"29 Feb 1999 00:00:00", "29 Feb 1999 00:00:00"},
      {"31 Jun 2026 00:00:00", "31 Jun 2026 00:00:00"},
      {"0 Jun 2026 00:00:00", "0 Jun 2026 00:00:00"},
      {"14 Nov 2026 24:00:00", "14 Nov 2026 24:00:00"},
      {"14 Nov 2026 22:60", "14 Nov 2026 22:60"},
      {"14 Nov", "14 Nov"},
      {"14/1 Nov 2026", "14/1 Nov 2026"},
      {"14 Nov 20266", "14 Nov 20266"},
      {"Nov 14 2026", "Nov 14 2026"},
      {"14 Nov 99999999999999999999", "14 Nov 99999999999999999999"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(ConvertHeaderDate(text, "yyyy-mm-dd hh:nn:ss"), expected) << text;
  }
}

TEST(DateTest, TheDateFormatProperty) {
  const std::string_view text = " Tue, 14 Nov 2026 22:03:59 +0000 ";
  EXPECT_EQ(ConvertHeaderDate(text, ""), "11/14/2026 10:03:59 PM");
  EXPECT_EQ(ConvertHeaderDate(text, "native"), "Tue, 14 Nov 2026 22:03:59 +0000");
  EXPECT_EQ(ConvertHeaderDate(text, "Fixed"), "Nov 14, 2026 22:03:59");
  EXPECT_EQ(ConvertHeaderDate(text, "general date"), "11/14/2026 10:03:59 PM");
}

TEST(DateTest, NumericDates) {
  const std::vector<std::pair<std::string_view, std::string_view>> cases = {
      {"2026/11/14 22:03", "2026-11-14 22:03:00"},
      {"11-14-2026", "2026-11-14 00:00:00"},
      {"1/2/3 1:2:3 am", "2003-01-02 01:02:03"},
      {"11/14/1850 12:00 AM", "1850-11-14 00:00:00"},
      {"2026/14/11", ""},
      {"11/14", ""},
      {"11/14/26 13:00 PM", ""},
      {"11-14/26", ""},
      {"11/14/26 1", ""},
      {"11/14/26 1:", ""},
  };
  for (const auto& [text, expected] : cases) {
    const auto date = ParseDate(text);
    EXPECT_EQ(date ? FormatDate(*date, "yyyy-mm-dd hh:nn:ss") : "", expected) << text;
  }
}

TEST(DateTest, CalendarAgreesWithCountingDays) {
  // 1 January 1900 was a Monday.
  DateTime date{1900, 1, 1};
  int weekday = 1;
  while (date.year < 2101) {
    int dayOfYear = 1;
    for (date.month = 1; date.month <= 12; ++date.month) {
      for (date.day = 1; date.day <= DaysInMonth(date.year, date.month); ++date.day) {
        ASSERT_EQ(Weekday(date), weekday) << FormatDate(date, "yyyy-mm-dd");
        ASSERT_EQ(DayOfYear(date), dayOfYear++);
        weekday = (weekday + 1) % 7;
      }
    }
    ++date.year;
  }
}

TEST(DateTest, MonthNumber) {
  const std::vector<std::pair<std::string_view, std::string_view>> cases = {
      {"jan", "01"}, {"Sep", "09"}, {"OCT", "10"}, {"Dec", "12"},
      {"June", ""},  {"", ""},      {"Mai", ""},
  };
  for (const auto& [name, number] : cases) EXPECT_EQ(MonthNumber(name), number) << name;
}

}  // namespace
}  // namespace quillon
