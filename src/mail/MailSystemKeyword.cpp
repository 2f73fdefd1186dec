#include "mail/MailSystemKeyword.h"

#include <algorithm>
#include <array>

#include "core/ServerError.h"
#include "core/Text.h"
#include "core/Value.h"

namespace quillon {

namespace {

struct Keyword {
  std::string_view text;
  MailSystemId system;
};

// The first keyword of a system is the one that is written.
constexpr std::array kKeywords{
    Keyword{"UNKNOWN", mail_system::kNone},
    Keyword{"AUTO-DETECT", mail_system::kNone},
    Keyword{"AUTODETECT", mail_system::kNone},
    Keyword{"MAPI", mail_system::kSimpleMapi},
    Keyword{"VIM", mail_system::kVim},
    Keyword{"MHS", mail_system::kMhs},
    Keyword{"ACTIVEMESSAGING", mail_system::kActiveMessaging},
    Keyword{"SMTP", mail_system::kInternet},
    Keyword{"SMTP/POP", mail_system::kInternet},
    Keyword{"INTERNET", mail_system::kInternet},
    Keyword{"VINES", mail_system::kVines},
    Keyword{"BANYAN", mail_system::kVines},
    Keyword{"BANYAN VINES", mail_system::kVines},
};

constexpr std::string_view kCserveKeyword = "CSERVE";  // written, but read as a number only

constexpr std::array<MailSystemId, 9> kNumbersRead{0, 1, 2, 3, 5, 7, 9, 10, 20};
constexpr std::array<MailSystemId, 13> kPropertyValues{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 20};

}  // namespace

std::string MailSystemKeyword(MailSystemId system) {
  if (system == mail_system::kCserve) return std::string(kCserveKeyword);
  const auto* const row =
      std::find_if(kKeywords.begin(), kKeywords.end(),
                   [system](const Keyword& keyword) { return keyword.system == system; });
  return row != kKeywords.end() ? std::string(row->text) : std::to_string(system);
}

MailSystemId MailSystemFromKeyword(std::string_view keyword) {
  const auto wanted = Trim(keyword);
  for (const auto& row : kKeywords) {
    if (EqualsIgnoreCase(row.text, wanted)) return row.system;
  }
  const Value number{std::string(wanted)};
  if (!IsNumeric(number)) return mail_system::kNone;
  const double value = ToDouble(number);
  const auto* const known = std::find_if(kNumbersRead.begin(), kNumbersRead.end(),
                                         [value](MailSystemId id) { return value == id; });
  return known != kNumbersRead.end() ? *known : mail_system::kNone;
}

bool IsMailSystemId(std::int32_t value) {
  return std::find(kPropertyValues.begin(), kPropertyValues.end(), value) != kPropertyValues.end();
}

}  // namespace quillon
