// The lines of AUTH, which are the same in SMTP (RFC 4954) and POP3 (RFC 5034).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "LoginMechanism.h"

namespace mailhost {

class LoginDialogue {
 public:
  enum class Kind {
    kChallenge,
    kAccepted,
    kRefused,
    kUnknown,    // no such mechanism
    kMalformed,  // not base64
    kCancelled,  // by the client
  };
  struct Answer {
    Kind kind;
    std::string challenge{};  // in base64
  };

  // `service` must outlive the dialogue.
  explicit LoginDialogue(const Service& service) : service_(service) {}

  // True while the next line belongs to the login.
  bool Active() const { return mechanism_ != nullptr; }
  // `argument` is what follows the word AUTH.
  Answer Begin(std::string_view argument, const TlsSession* tls);
  Answer Continue(std::string_view line);
  void GiveUp() { mechanism_.reset(); }

 private:
  Answer Next(std::optional<std::string_view> response);

  const Service& service_;
  std::unique_ptr<LoginMechanism> mechanism_;
};

}  // namespace mailhost
