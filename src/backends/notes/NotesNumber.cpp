#include "backends/notes/NotesNumber.h"

#include <algorithm>
#include <array>

#include "mail/MailResult.h"

namespace quillon {

namespace {

constexpr std::int32_t kFirstOwn = 4000;
constexpr std::int32_t kLastOwn = 6999;
constexpr std::int32_t kLowWord = 0xFFFF;

constexpr std::array<std::uint32_t, 7> kGone{
    0x800706BA,  // RPC_S_SERVER_UNAVAILABLE
    0x800706BE,  // RPC_S_CALL_FAILED
    0x800706BF,  // RPC_S_CALL_FAILED_DNE
    0x80010007,  // RPC_E_SERVER_DIED
    0x80010012,  // RPC_E_SERVER_DIED_DNE
    0x80010108,  // RPC_E_DISCONNECTED
    0x800401FD,  // CO_E_OBJNOTCONNECTED
};

constexpr std::array<std::uint32_t, 2> kUnknownMember{
    0x80020003,  // DISP_E_MEMBERNOTFOUND
    0x80020006,  // DISP_E_UNKNOWNNAME
};

template <typename Numbers>
bool Holds(const Numbers& numbers, std::int32_t number) {
  return std::find(numbers.begin(), numbers.end(), static_cast<std::uint32_t>(number)) !=
         numbers.end();
}

}  // namespace

std::int32_t NotesNumber(std::int32_t automationError) {
  const auto low = automationError & kLowWord;
  if (low >= kFirstOwn && low <= kLastOwn) return low;
  if (automationError == kBackEndSuccess || Holds(kGone, automationError)) return notes::kFailure;
  return automationError;
}

bool IsClientGone(const AutomationError& error) {
  return Holds(kGone, error.Number());
}

bool IsUnknownMember(const AutomationError& error) {
  return Holds(kUnknownMember, error.Number());
}

}  // namespace quillon
