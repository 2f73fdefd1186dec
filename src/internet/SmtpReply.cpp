#include "internet/SmtpReply.h"

#include "core/Text.h"

namespace quillon {

SmtpReply ParseSmtpReply(std::string_view line) {
  SmtpReply reply;
  std::size_t digits = 0;
  while (digits < 3 && digits < line.size() && line[digits] >= '0' && line[digits] <= '9') {
    reply.code = reply.code * 10 + (line[digits++] - '0');
  }
  reply.isContinuation = line.size() > 3 && line[3] == '-';
  if (line.size() > 3) reply.text = Trim(line.substr(3));
  return reply;
}

std::string_view ForwardPath(std::string_view replyText) {
  const auto open = replyText.find('<');
  if (open == std::string_view::npos) return {};
  const auto path = replyText.substr(open + 1);
  return Trim(path.substr(0, path.find('>')));
}

}  // namespace quillon
