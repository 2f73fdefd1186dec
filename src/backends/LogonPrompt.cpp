#include "backends/LogonPrompt.h"

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

void AskForLogon(LoginPrompt& prompt, LoginQuestion question, MailRequest& request) {
  auto& instance = request.instance;
  question.owner = request.shared.ownerWindow;
  LoginFields fields{instance.postOffice, instance.loginName, instance.password};
  switch (prompt.Ask(question, fields)) {
    case LoginPrompt::Answer::Entered:
      instance.postOffice = fields.server;
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
