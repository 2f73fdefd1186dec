#include "backends/Diagnostic.h"

#include "core/Text.h"

namespace quillon {

MailResult Diagnostic::Fail(const MailRequest& request, const std::string& context,
                            std::int32_t number) const {
  Show(request, context, number);
  return {number, textOf_(number)};
}

void Diagnostic::Show(const MailRequest& request, const std::string& context,
                      std::int32_t number) const {
  if (request.instance.errorDisplay == kFalse) return;
  std::string text = context;
  if (number != 0) {
    if (!text.empty()) text += ": ";
    text += "{" + TrimmedCopy(std::to_string(number) + "} " + textOf_(number));
  }
  messageBox_.Show(title_, text, MessageBoxPort::Icon::Critical);
}

}  // namespace quillon
