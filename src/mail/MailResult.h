// How an operation of a mail system has ended.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

inline constexpr std::int32_t kBackEndSuccess = -1;

// Success, or the number of the mail system's own interface and what the mail system says to it.
// The text is taken when the operation fails: later its session may be gone.
struct MailResult {
  std::int32_t number = kBackEndSuccess;
  std::string text;  // empty when there is none

  bool Succeeded() const noexcept { return number == kBackEndSuccess; }
};

}  // namespace quillon
