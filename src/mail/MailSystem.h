// The identifiers of mail systems and the families that share a back end, a session handle and an
// error table.
#pragma once

#include <cstdint>

namespace quillon {

using MailSystemId = std::int16_t;

namespace mail_system {

inline constexpr MailSystemId kNone = 0;
inline constexpr MailSystemId kSimpleMapi = 1;
inline constexpr MailSystemId kVim = 2;
inline constexpr MailSystemId kMhs = 3;
inline constexpr MailSystemId kMhsFamily = 4;
inline constexpr MailSystemId kCserve = 5;
inline constexpr MailSystemId kPop3 = 6;  // the receiving half of Internet mail alone
inline constexpr MailSystemId kSmtp = 7;  // the sending half of Internet mail alone
inline constexpr MailSystemId kMapiFamily = 8;
inline constexpr MailSystemId kActiveMessaging = 9;
inline constexpr MailSystemId kInternet = 10;
inline constexpr MailSystemId kNotes = 11;
inline constexpr MailSystemId kVines = 20;

}  // namespace mail_system

// One back end serves each family.
enum class MailFamily { None, SimpleMapi, Vim, Mhs, ActiveMessaging, Internet, Notes, Vines };

constexpr MailFamily FamilyOf(MailSystemId id) noexcept {
  switch (id) {
    case 1:
    case 5:
    case 8:
      return MailFamily::SimpleMapi;
    case 2:
    case 25:
      return MailFamily::Vim;
    case 3:
    case 4:
      return MailFamily::Mhs;
    case 6:
    case 7:
    case 10:
      return MailFamily::Internet;
    case 9:
      return MailFamily::ActiveMessaging;
    case 11:
      return MailFamily::Notes;
    case 20:
      return MailFamily::Vines;
    default:
      return MailFamily::None;
  }
}

}  // namespace quillon
