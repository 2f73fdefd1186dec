#include "sasl/LoginMechanism.h"

namespace quillon {

SaslStep LoginMechanism::Answer(std::string_view) {
  switch (answers_++) {
    case 0:
      return Respond(credentials_.loginName);
    case 1:
      return Respond(credentials_.password);
    default:
      return FailLogin("The server asks for more than the login method LOGIN has.");
  }
}

SaslStep LoginMechanism::Succeeded(std::string_view) {
  if (answers_ == 2) return {};
  return FailLogin("The server reports a login before it has asked for name and password.");
}

}  // namespace quillon
