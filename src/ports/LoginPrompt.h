// Asks the user for the login data that a mail system needs and the client did not give.
#pragma once

#include <string>

namespace quillon {

struct LoginFields {
  std::string server;
  std::string name;
  std::string password;
};

class LoginPrompt {
 public:
  enum class Answer {
    Entered,  // the fields hold what the user typed
    Cancelled,
    Unavailable,  // there is no user to ask
  };

  virtual ~LoginPrompt() = default;
  virtual Answer Ask(const std::string& caption, LoginFields& fields) = 0;
};

// For a process without a login dialog: there is nobody to ask.
class NoLoginPrompt final : public LoginPrompt {
 public:
  Answer Ask(const std::string&, LoginFields&) override { return Answer::Unavailable; }
};

}  // namespace quillon
