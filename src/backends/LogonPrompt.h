// The data of a logon, asked from the user when some of it is missing.
#pragma once

#include "mail/BackEnd.h"
#include "ports/LoginPrompt.h"

namespace quillon {

namespace login_label {
inline constexpr const char* kPostOffice = "Post &office:";
inline constexpr const char* kProfile = "Profile &name:";
inline constexpr const char* kUser = "User &name:";
inline constexpr const char* kPassword = "&Password:";
}  // namespace login_label

// What he enters goes into the instance: the server is its post office. Throws ServerError 522 when
// he cancels, 544 when there is nobody to ask.
void AskForLogon(LoginPrompt& prompt, LoginQuestion question, MailRequest& request);

}  // namespace quillon
