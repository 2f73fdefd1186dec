// Asks the user for the login data that a mail system needs and the client did not give.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// What is asked. A field whose label is empty is none that the mail system needs.
struct LoginQuestion {
  std::string caption = {};
  std::int32_t owner = 0;   // a window of the client, 0 for none
  std::string server = {};  // each the label of a field, with "&" before its access key
  std::string name = {};
  std::string password = {};
};

// What the user is offered, and then what he has entered.
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

  // Returns when the window has gone; other calls are served meanwhile. Fields that were not asked
  // for stay as they are.
  virtual Answer Ask(const LoginQuestion& question, LoginFields& fields) = 0;
};

// For a process without a login dialog: there is nobody to ask.
class NoLoginPrompt final : public LoginPrompt {
 public:
  Answer Ask(const LoginQuestion&, LoginFields&) override { return Answer::Unavailable; }
};

}  // namespace quillon
