// The keywords by which the configuration file names mail systems.
#pragma once

#include <string>
#include <string_view>

#include "mail/MailSystemId.h"

namespace quillon {

// The keyword written for a mail system; its number where it has none.
std::string MailSystemKeyword(MailSystemId system);

// The mail system a keyword or number names (in any case, blanks around it ignored); 0 for anything
// else.
MailSystemId MailSystemFromKeyword(std::string_view keyword);

// Whether a value may be put into the mailSystem property.
bool IsMailSystemId(std::int32_t value);

}  // namespace quillon
