#include "mail/MailSystemKeyword.h"

#include <algorithm>

#include "core/Text.h"
#include "core/Value.h"

namespace quillon {

std::string MailSystemKeyword(MailSystemId system) {
  const auto keyword = RowOf(system).keyword;
  return keyword.empty() ? std::to_string(system) : std::string(keyword);
}

MailSystemId MailSystemFromKeyword(std::string_view keyword) {
  const auto wanted = Trim(keyword);
  const Value number{std::string(wanted)};
  const bool isNumber = IsNumeric(number);
  for (const auto& row : MailSystemRows()) {
    const bool isNamed =
        isNumber
            ? row.isReadAsNumber && ToDouble(number) == row.id
            : std::any_of(row.keywordsRead.begin(), row.keywordsRead.end(), [wanted](auto text) {
                return !text.empty() && EqualsIgnoreCase(text, wanted);
              });
    if (isNamed) return row.id;
  }
  return mail_system::kNone;
}

bool IsMailSystemId(std::int32_t value) {
  const auto rows = MailSystemRows();
  return std::any_of(rows.begin(), rows.end(),
                     [value](const auto& row) { return row.isPropertyValue && row.id == value; });
}

}  // namespace quillon
