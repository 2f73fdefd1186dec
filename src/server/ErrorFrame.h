// The frame around every public member: what fails inside leaves as a public code and text, and the
// debug box is shown when error display is on.
#pragma once

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "core/ServerError.h"
#include "mail/BusyGate.h"

namespace quillon {

class MessageBoxPort;
struct Environment;
struct InstanceState;

enum class MemberKind { Method, Property, Procedure };

class ErrorFrame {
 public:
  ErrorFrame(const InstanceState& state, Environment& environment)
      : state_(state), environment_(environment) {}

  template <typename Body>
  decltype(auto) Run(const char* member, MemberKind kind, Body&& body) const {
    try {
      return std::forward<Body>(body)();
    } catch (const ConversionError&) {
      throw;  // the caller's fault, answered with the standard automation codes
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const MailSystemBusy&) {
      throw;  // the call has not begun
    } catch (const ServerError& error) {
      Raise(member, kind, error);
    } catch (const std::exception&) {
      Raise(member, kind, ServerError(0));
    }
  }

 private:
  // Fills in the text, shows the debug box, throws.
  [[noreturn]] void Raise(const char* member, MemberKind kind, const ServerError& error) const;

  const InstanceState& state_;
  Environment& environment_;
};

// The text of a debug box: the message, ": " and the number in braces, whatever of it there is.
std::string DebugBoxText(const std::string& message, std::int32_t code);

}  // namespace quillon
