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
  // What the other side really said, for those who want to know (DetailedErrors): without a full
  // stop or brackets, as "mail.example.com:25 answered MAIL FROM with: 530 5.7.0 Authenticate
  // first". It may stand for every number, and is empty where there is nothing to say.
  std::string detail = {};
  bool tellsDetail = false;  // the client hears the detail too

  bool Succeeded() const noexcept { return number == kBackEndSuccess; }
};

// A text for a client, with the detail behind it in brackets where there is one to tell.
inline std::string WithDetail(std::string text, const MailResult& result) {
  if (!result.tellsDetail || result.detail.empty()) return text;
  if (!text.empty()) text += ' ';
  return text + "(" + result.detail + ")";
}

}  // namespace quillon
