#include "backends/vim/VimHeader.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "codec/DateFormat.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kInbox = "INBOX";
constexpr std::string_view kMessageLog = "QLNM_MESSAGE_LOG";
constexpr std::string_view kGeneralDate = "General Date";

constexpr int kFirstYear = 100;  // of those that have a text
constexpr int kLastYear = 9999;

constexpr std::size_t kDigits = 8;  // of each half of a reference

// By VIM's number: low, normal and high.
constexpr std::array<std::int16_t, 3> kPriorities = {5, 3, 1};

bool Exists(const VimDate& date) {
  return date.year >= kFirstYear && date.year <= kLastYear && date.month >= 1 && date.month <= 12 &&
         date.day >= 1 && date.day <= DaysInMonth(date.year, date.month) && date.hour >= 0 &&
         date.hour < 24 && date.minute >= 0 && date.minute < 60 && date.second >= 0 &&
         date.second < 60;
}

DateTime Later(const DateTime& date, int byMinutes) {
  using namespace std::chrono;
  const auto day = year(date.year) / date.month / date.day;
  const auto time = sys_days(day) + hours(date.hour) + minutes(date.minute + byMinutes);
  const auto days = floor<std::chrono::days>(time);
  const year_month_day moved(days);
  const auto minute = duration_cast<minutes>(time - days).count();
  return {static_cast<int>(moved.year()),
          static_cast<int>(static_cast<unsigned>(moved.month())),
          static_cast<int>(static_cast<unsigned>(moved.day())),
          static_cast<int>(minute / 60),
          static_cast<int>(minute % 60),
          date.second};
}

std::string HexDigits(std::uint32_t number) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string text(kDigits, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number >>= 4U) {
    *digit = kHex[number & 0xFU];
  }
  return text;
}

bool ParseHex(std::string_view text, std::uint32_t& number) {
  const auto* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, 16);
  return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

VimFolder::VimFolder(const std::string& name) : isLog(EqualsIgnoreCase(name, kMessageLog)) {
  if (!isLog && !EqualsIgnoreCase(name, kInbox)) container = name;
}

std::optional<DateTime> LocalDateOf(const VimDate& date, const LocalClock& clock) {
  if (!Exists(date)) return std::nullopt;
  const DateTime plain{date.year, date.month, date.day, date.hour, date.minute, date.second};
  if (!date.isGmt) return plain;
  const auto local = Later(plain, clock.Now().utcOffset);
  if (local.year < kFirstYear || local.year > kLastYear) return plain;
  return local;
}

std::string VimDateText(const std::optional<DateTime>& date, const std::string& dateFormat) {
  if (!date) return {};
  const bool native = EqualsIgnoreCase(dateFormat, "NATIVE");
  return FormatReceivedDate(*date, native ? kGeneralDate : std::string_view(dateFormat));
}

std::string VimReferenceText(VimReference reference) {
  return HexDigits(reference.first) + HexDigits(reference.second);
}

std::optional<VimReference> ParseVimReference(const std::string& text) {
  if (text.size() != 2 * kDigits) return std::nullopt;
  VimReference reference;
  const std::string_view digits = text;
  if (!ParseHex(digits.substr(0, kDigits), reference.first) ||
      !ParseHex(digits.substr(kDigits), reference.second)) {
    return std::nullopt;
  }
  return reference;
}

HeaderRecord VimRecordOf(const VimEnvelope& envelope, const VimHeader& header,
                         std::size_t attachments) {
  HeaderRecord record;
  record.uniqueId = VimReferenceText(envelope.reference);
  record.subject = header.subject.empty() ? envelope.subject : header.subject;
  record.originator = header.fromName.empty() ? envelope.fromName : header.fromName;
  // Its names are its addresses.
  record.replyAddress = record.originator;
  if (header.priority < kPriorities.size()) record.priority = kPriorities[header.priority];
  record.receiptRequested = ToShortBool(header.returnReceipt);
  auto details = std::make_shared<MessageDetails>();
  details->attachments = static_cast<std::int32_t>(attachments);
  record.details = std::move(details);
  return record;
}

}  // namespace quillon
