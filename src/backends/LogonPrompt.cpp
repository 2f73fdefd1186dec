#include "backends/LogonPrompt.h"

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

void AskForLogon(LoginPrompt& prompt, const char* caption, InstanceState& instance) {
  LoginFields fields{{}, instance.loginName, instance.password};
  switch (prompt.Ask(caption, fields)) {
    case LoginPrompt::Answer::Entered:
      instance.loginName = fields.name;
      instance.password = fields.password;
      return;
    case LoginPrompt::Answer::Cancelled:
      throw ServerError(error_code::kUserAborted, "User selected cancel in dialog.");
    case LoginPrompt::Answer::Unavailable:
      throw ServerError(error_code::kLoginData);
  }
}

}  // namespace quillon
