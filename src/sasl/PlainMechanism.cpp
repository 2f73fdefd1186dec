#include "sasl/PlainMechanism.h"

namespace quillon {

std::optional<SaslStep> PlainMechanism::Begin() {
  const std::string* const fields[] = {&credentials_.authorization, &credentials_.loginName,
                                       &credentials_.password};
  std::string message;
  for (const std::string* const field : fields) {
    if (field->find('\0') != std::string::npos) {
      return FailLogin("The login name or the password holds a NUL, which PLAIN cannot carry.");
    }
    if (field != fields[0]) message += '\0';
    message += *field;
  }
  return Respond(std::move(message));
}

SaslStep PlainMechanism::Answer(std::string_view) {
  return FailLogin("The server asks for more than the login method PLAIN has.");
}

}  // namespace quillon
