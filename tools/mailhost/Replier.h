// Sends a session's replies.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Connection.h"

namespace mailhost {

class Replier {
 public:
  explicit Replier(Connection& connection) : connection_(connection) {}

  // A reply of one line, or of several joined with CR LF; the last CR LF is added here.
  void Reply(std::string text);
  // A POP3 reply of several lines: `body` is whole lines, dots doubled; "." is added here.
  void ReplyLines(std::string head, std::string body);
  void ReplyContent(std::string head, std::unique_ptr<ByteSource> body);
  // Closes the connection when everything is sent.
  void Finish() { connection_.Out().Close(); }

 private:
  Connection& connection_;
};

}  // namespace mailhost
