#include "server/ErrorFrame.h"

#include "core/Text.h"
#include "mail/InstanceState.h"
#include "ports/MessageBox.h"
#include "server/Dispatch.h"
#include "server/Environment.h"
#include "server/ErrorTable.h"

namespace quillon {

namespace {

constexpr const char* kDebugBoxTitle = "Mail Error";

std::string UndeterminedText(const char* member, MemberKind kind) {
  const char* const name = kind == MemberKind::Method     ? " method."
                           : kind == MemberKind::Property ? " property."
                                                          : " procedure.";
  return std::string("Undetermined error in ") + member + name;
}

}  // namespace

std::string DebugBoxText(const std::string& message, std::int32_t code) {
  if (code == 0) return message;
  const auto number = "{" + std::to_string(code) + "}";
  return message.empty() ? number : message + ": " + number;
}

void ErrorFrame::Raise(const char* member, MemberKind kind, const ServerError& error) const {
  if (dynamic_cast<const MailSystemError*>(&error) != nullptr) throw;
  auto text = error.Text().empty() ? ErrorText(error.Code()) : error.Text();
  if (text.empty()) text = UndeterminedText(member, kind);
  if (state_.errorDisplay == kTrue) {
    environment_.messageBox.Show(kDebugBoxTitle, DebugBoxText(text, error.Code()),
                                 MessageBoxPort::Icon::None);
  }
  throw ServerError(error.Code(), text);
}

}  // namespace quillon
