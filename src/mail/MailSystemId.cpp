#include "mail/MailSystemId.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr std::array kRows{
    MailSystemRow{.id = mail_system::kNone,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "UNKNOWN",
                  .keywordsRead = {"UNKNOWN", "AUTO-DETECT", "AUTODETECT"}},
    MailSystemRow{.id = mail_system::kSimpleMapi,
                  .family = MailFamily::SimpleMapi,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "MAPI",
                  .keywordsRead = {"MAPI"},
                  .errorBase = 2000,
                  .decoded = {{{2000, 2999, 2000}}}},
    MailSystemRow{.id = mail_system::kVim,
                  .family = MailFamily::Vim,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "VIM",
                  .keywordsRead = {"VIM"},
                  .errorBase = 4000,
                  .decoded = {{{4000, 4999, 4000}}}},
    MailSystemRow{.id = mail_system::kMhs,
                  .family = MailFamily::Mhs,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "MHS",
                  .keywordsRead = {"MHS"},
                  .errorBase = 5000,
                  .decoded = {{{5000, 5999, 5000}}}},
    MailSystemRow{.id = 4, .family = MailFamily::Mhs, .isPropertyValue = true, .errorBase = 5000},
    MailSystemRow{.id = mail_system::kCserve,
                  .family = MailFamily::SimpleMapi,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "CSERVE",
                  .errorBase = 2000},
    MailSystemRow{.id = mail_system::kPop3,
                  .family = MailFamily::Internet,
                  .isPropertyValue = true,
                  .errorBase = 6000},
    MailSystemRow{.id = mail_system::kSmtp,
                  .family = MailFamily::Internet,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .errorBase = 6000},
    MailSystemRow{
        .id = 8, .family = MailFamily::SimpleMapi, .isPropertyValue = true, .errorBase = 2000},
    MailSystemRow{.id = mail_system::kActiveMessaging,
                  .family = MailFamily::ActiveMessaging,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "ACTIVEMESSAGING",
                  .keywordsRead = {"ACTIVEMESSAGING"},
                  .errorBase = 8000,
                  .decoded = {{{8000, 8999, 8000}, {0x40200, 0x40200, 8000}}}},
    MailSystemRow{.id = mail_system::kInternet,
                  .family = MailFamily::Internet,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "SMTP",
                  .keywordsRead = {"SMTP", "SMTP/POP", "INTERNET"},
                  .errorBase = 6000,
                  .decoded = {{{6000, 6999, 6000}}}},
    MailSystemRow{.id = mail_system::kNotes,
                  .family = MailFamily::Notes,
                  .isPropertyValue = true,
                  .errorBase = 2000,
                  .otherBase = {4000, 6999, 5000},
                  .decoded = {{{9000, 9999, 9000}}}},
    MailSystemRow{.id = 12, .decoded = {{{7000, 7999, 7000}}}},
    MailSystemRow{.id = mail_system::kVines,
                  .family = MailFamily::Vines,
                  .isPropertyValue = true,
                  .isReadAsNumber = true,
                  .keyword = "VINES",
                  .keywordsRead = {"VINES", "BANYAN", "BANYAN VINES"},
                  .decoded = {{{3000, 3999, 0}}}},
    MailSystemRow{.id = 25, .family = MailFamily::Vim},
    MailSystemRow{.id = 30, .isAlwaysPresent = true, .errorBase = 10000},
    MailSystemRow{.id = 40, .errorBase = 11000},
};

constexpr MailSystemRow kUnknown{.id = -1};

}  // namespace

std::span<const MailSystemRow> MailSystemRows() {
  return kRows;
}

const MailSystemRow& RowOf(MailSystemId id) {
  const auto* const row =
      std::find_if(kRows.begin(), kRows.end(), [id](const auto& known) { return known.id == id; });
  return row != kRows.end() ? *row : kUnknown;
}

}  // namespace quillon
