// Name and password for a logon, asked from the user when one of them is missing.
#pragma once

#include "mail/BackEnd.h"
#include "ports/LoginPrompt.h"

namespace quillon {

// What he enters goes into the instance. Throws ServerError 522 when he cancels, 544 when there is
// nobody to ask.
void AskForLogon(LoginPrompt& prompt, const char* caption, InstanceState& instance);

}  // namespace quillon
