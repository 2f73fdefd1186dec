#include "backends/Diagnostic.h"

#include "core/Text.h"

namespace quillon {

MailResult Diagnostic::Fail(const MailRequest& request, const std::string& context,
                            std::int32_t number) const {
  return Fail(request, context, number, textOf_(number));
}

MailResult Diagnostic::Fail(const MailRequest& request, const std::string& context,
                            std::int32_t number, const std::string& text) const {
  Show(request, context, number, text);
  return {number, text};
}

void Diagnostic::Show(const MailRequest& request, const std::string& context,
                      std::int32_t number) const {
  Show(request, context, number, textOf_(number));
}

void Diagnostic::Show(const MailRequest& request, const std::string& context, std::int32_t number,
                      const std::string& text) const {
  if (request.instance.errorDisplay == kFalse) return;
  std::string shown = context;
  if (number != 0) {
    if (!shown.empty()) shown += ": ";
    shown += "{" + TrimmedCopy(std::to_string(number) + "} " + text);
  }
  messageBox_.Show(title_, shown, MessageBoxPort::Icon::Critical);
}

}  // namespace quillon
