// For a process without a login dialog: there is nobody to ask.
#pragma once

#include "platform/LoginPrompt.h"

namespace quillon {

class NoLoginPrompt final : public LoginPrompt {
 public:
  Answer Ask(const std::string&, LoginFields&) override { return Answer::Unavailable; }
};

}  // namespace quillon
