// The identifiers of mail systems and the one table of what is fixed about each. What depends on
// the workstation is asked of the MailSystem of its family.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace quillon {

using MailSystemId = std::int16_t;

namespace mail_system {

inline constexpr MailSystemId kNone = 0;
inline constexpr MailSystemId kSimpleMapi = 1;
inline constexpr MailSystemId kVim = 2;
inline constexpr MailSystemId kMhs = 3;
inline constexpr MailSystemId kCserve = 5;
inline constexpr MailSystemId kPop3 = 6;  // the receiving half of Internet mail alone
inline constexpr MailSystemId kSmtp = 7;  // the sending half of Internet mail alone
inline constexpr MailSystemId kActiveMessaging = 9;
inline constexpr MailSystemId kInternet = 10;
inline constexpr MailSystemId kNotes = 11;
inline constexpr MailSystemId kVines = 20;

// The order in which mail systems are looked for.
inline constexpr std::array kDetectionOrder{
    kVines, kVim, kMhs, kCserve, kActiveMessaging, kSimpleMapi, kInternet,
};

}  // namespace mail_system

// One MailSystem serves each family.
enum class MailFamily { None, SimpleMapi, Vim, Mhs, ActiveMessaging, Internet, Notes, Vines };

// A range of numbers, empty by default, and what is added to them or taken off.
struct NumberRange {
  std::int32_t first = 0;
  std::int32_t last = -1;
  std::int32_t shift = 0;

  constexpr bool Holds(std::int64_t number) const noexcept {
    return number >= first && number <= last;
  }
};

struct MailSystemRow {
  MailSystemId id = mail_system::kNone;
  MailFamily family = MailFamily::None;
  bool isPropertyValue = false;  // may be put into mailSystem
  bool isReadAsNumber = false;   // the configuration file may name it by its number
  bool isAlwaysPresent = false;  // whatever the workstation has

  // As the configuration file names it. None is written: the number is.
  std::string_view keyword = {};
  std::array<std::string_view, 3> keywordsRead = {};

  // What is added to a number of the system's interface to make it a public code, and the numbers
  // for which it is something else.
  std::int32_t errorBase = 0;
  NumberRange otherBase = {};

  // The public codes that are taken apart as the system's, and what is taken off them. No mirror
  // images of the bases, on purpose: clients rely on both as they are.
  std::array<NumberRange, 2> decoded = {};
};

std::span<const MailSystemRow> MailSystemRows();

// An identifier without a row of its own has the facts of an unknown system.
const MailSystemRow& RowOf(MailSystemId id);

inline MailFamily FamilyOf(MailSystemId id) {
  return RowOf(id).family;
}

}  // namespace quillon
