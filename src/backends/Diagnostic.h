// The failures of a mail system: shown to the user when he wants to see them, and handed on.
#pragma once

#include <cstdint>
#include <string>

#include "mail/BackEnd.h"
#include "ports/MessageBox.h"

namespace quillon {

class Diagnostic {
 public:
  using TextOf = std::string (*)(std::int32_t number);

  // `title` is that of the box, `textOf` the table of the mail system.
  Diagnostic(MessageBoxPort& messageBox, const char* title, TextOf textOf)
      : messageBox_(messageBox), title_(title), textOf_(textOf) {}

  // The result of an operation that has failed with `number`; with ErrorDisplay a box says in which
  // step. The number 0 has no part in what the box says.
  MailResult Fail(const MailRequest& request, const std::string& context,
                  std::int32_t number) const;

  // The same with words of the mail system's own.
  MailResult Fail(const MailRequest& request, const std::string& context, std::int32_t number,
                  const std::string& text) const;

  void Show(const MailRequest& request, const std::string& context, std::int32_t number) const;

 private:
  void Show(const MailRequest& request, const std::string& context, std::int32_t number,
            const std::string& text) const;

  MessageBoxPort& messageBox_;
  const char* title_;
  TextOf textOf_;
};

}  // namespace quillon
