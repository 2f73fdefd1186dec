#include "backends/mhs/SmfReader.h"

#include <algorithm>
#include <string>

#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kWhite = " \t";
constexpr std::string_view kDigits = "0123456789";
constexpr std::size_t kMostName = 64;

std::string_view TakeLine(std::string_view& rest) {
  const auto end = rest.find('\n');
  auto line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string_view WithoutWhiteEnd(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kWhite) + 1);
}

bool IsFirstLine(std::string_view line) {
  line = WithoutWhiteEnd(line);
  return EqualsIgnoreCase(line, "SMF-70") || EqualsIgnoreCase(line, "SMF-71");
}

bool IsName(std::string_view name) {
  return !name.empty() && name.size() <= kMostName &&
         std::all_of(name.begin(), name.end(), [](char c) {
           return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                  c == '-';
         });
}

// False when the line is no field.
bool AddField(std::string_view line, std::vector<SmfField>& fields) {
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return false;
  auto name = WithoutWhiteEnd(line.substr(0, colon));
  name.remove_prefix(std::min(name.find_first_not_of(kDigits), name.size()));
  if (!IsName(name)) return false;
  fields.push_back({std::string(name), CleanSmfValue(line.substr(colon + 1))});
  return true;
}

void Continue(std::string_view line, std::string& value) {
  const auto more = CleanSmfValue(line);
  if (!value.empty() && !more.empty()) value += ' ';
  value += more;
}

}  // namespace

std::optional<SmfMessage> ReadSmf(std::string_view bytes) {
  auto rest = bytes;
  if (!IsFirstLine(TakeLine(rest))) return std::nullopt;
  SmfMessage message;
  while (!rest.empty()) {
    auto after = rest;
    const auto line = TakeLine(after);
    if (line.find_first_not_of(kWhite) == std::string_view::npos) {
      rest = after;
      break;
    }
    const bool fits = bytes.size() - rest.size() + line.size() <= kMostSmfHead;
    if (kWhite.find(line.front()) != std::string_view::npos) {
      if (message.fields.empty()) break;
      if (fits) Continue(line, message.fields.back().value);
    } else if (!AddField(line, message.fields)) {
      break;
    } else if (!fits) {
      message.fields.pop_back();
    }
    rest = after;
  }
  message.headSize = bytes.size() - rest.size();
  message.body = rest;
  return message;
}

}  // namespace quillon
