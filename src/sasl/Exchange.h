// A login as lines: the AUTH command of SMTP (RFC 4954) and of POP3 (RFC 5034), which differ only
// in how the server marks its challenges and how long a command may be. It reads and writes
// nothing: whoever has the connection gives it what the server says and sends what it answers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "sasl/Mechanism.h"

namespace quillon {

// Longest commands, with the line end. A server that takes no initial response has 0.
inline constexpr std::size_t kLongestSmtpAuth = 512;
inline constexpr std::size_t kLongestPopAuth = 255;

struct ExchangeLine {
  // Without its line end. None when there is nothing to say: before anything has been sent, the
  // login just does not take place, and after "*" the server has the word.
  std::optional<std::string> line;
  std::string shown;  // the same for a log, without secrets

  // Why the login fails, as a sentence; `line` then cancels the exchange, and the server's answer
  // to that is awaited.
  std::string failure;
};

class Exchange {
 public:
  // RFC 4954, 4: what a client has to take.
  static constexpr std::size_t kLongestChallenge = 12288;
  static constexpr int kMostChallenges = 10;

  // The mechanism outlives the exchange, which is for one login.
  Exchange(Mechanism& mechanism, std::size_t longestCommand)
      : mechanism_(mechanism), longestCommand_(longestCommand) {}

  // The command.
  ExchangeLine Begin();

  // The server says what stands behind "334 " or "+ ".
  ExchangeLine Answer(std::string_view challenge);

  // The server reports success. Empty when that is so; otherwise why it cannot be, as a sentence:
  // then the connection is closed, since somebody else may be at its other end.
  std::string Succeeded();

  // What goes with the server's refusal: why the exchange was cancelled, or the reason that the
  // server gave inside it. May be empty.
  std::string Reason() const;

 private:
  SaslStep NextStep(std::string_view challenge);
  ExchangeLine Cancel(std::string reason);

  Mechanism& mechanism_;
  const std::size_t longestCommand_;
  std::optional<std::string> initial_;  // that waits for the server's first, empty challenge
  int challenges_ = 0;
  std::string failure_;
};

}  // namespace quillon
