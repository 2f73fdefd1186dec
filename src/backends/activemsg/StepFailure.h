// The failure of one step of an operation: what the box of the mail system says of the step, and
// the mail system's number. A call of an object that fails outside of such a step throws
// AutomationError.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "backends/Diagnostic.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "ports/AutomationObject.h"

namespace quillon {

class StepFailure : public std::runtime_error {
 public:
  StepFailure(const std::string& context, std::int32_t number)
      : std::runtime_error(context), number_(number) {}

  std::int32_t Number() const noexcept { return number_; }

 private:
  std::int32_t number_;
};

// The user has ended the operation in a window of the mail system; he needs no box that says so.
class UserAbort : public std::exception {};

// Runs an operation of the mail system; `context` is what the box says of a failure.
MailResult RunOperation(const Diagnostic& diagnostic, const MailRequest& request,
                        const std::string& context, const std::function<void()>& operation);

// Runs a step whose calls fail in a context of their own.
template <typename Step>
decltype(auto) InContext(const std::string& context, Step&& step) {
  try {
    return std::forward<Step>(step)();
  } catch (const AutomationError& error) {
    throw StepFailure(context, ActiveMessagingNumber(error.Number()));
  }
}

}  // namespace quillon
