#include "Replier.h"

#include <utility>

namespace mailhost {

void Replier::Reply(std::string text) {
  connection_.Out().Text(std::move(text) + "\r\n");
}

void Replier::ReplyLines(std::string head, std::string body) {
  connection_.Out().Text(std::move(head) + "\r\n" + body + ".\r\n");
}

void Replier::ReplyContent(std::string head, std::unique_ptr<ByteSource> body) {
  connection_.Out().Text(std::move(head) + "\r\n");
  connection_.Out().Content(std::move(body));
  connection_.Out().Text(".\r\n");
}

}  // namespace mailhost
