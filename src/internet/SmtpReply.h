// One line of an SMTP reply (RFC 5321, 4.2).
#pragma once

#include <string_view>

namespace quillon {

struct SmtpReply {
  int code = 0;  // the number that the first three characters begin with; 0 when there is none
  bool isContinuation = false;  // more lines of the same reply follow
  std::string_view text;        // after the code, trimmed
};

SmtpReply ParseSmtpReply(std::string_view line);

// The address between "<" and ">" of a reply that names a forward path; empty when there is none.
std::string_view ForwardPath(std::string_view replyText);

}  // namespace quillon
