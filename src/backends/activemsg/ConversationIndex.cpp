#include "backends/activemsg/ConversationIndex.h"

#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kReplyMark = "::REPLY";
constexpr std::string_view kReplySubject = "RE:";

}  // namespace

std::string MakeConversationIndex(AutomationObject& session, std::string_view property) {
  const auto index = Trim(property);
  if (index.empty()) return TextOf(session.Call("CreateConversationIndex"));
  const auto mark = index.find(kReplyMark);
  if (mark == std::string_view::npos || mark == 0) return std::string(index);
  return TextOf(
      session.Call("CreateConversationIndex", Arguments({std::string(index.substr(0, mark))})));
}

std::string ConversationTopic(std::string_view subject) {
  subject = Trim(subject);
  while (EqualsIgnoreCase(subject.substr(0, kReplySubject.size()), kReplySubject)) {
    subject = Trim(subject.substr(kReplySubject.size()));
  }
  return std::string(subject);
}

}  // namespace quillon
