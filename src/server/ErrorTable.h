// The public error numbers: the texts of the server's own codes, and how the numbers of the mail
// systems are folded in among them.
#pragma once

#include <cstdint>
#include <string>

#include "core/ErrorCode.h"
#include "mail/MailSystemId.h"

namespace quillon {

// Every public number is this plus a code.
inline constexpr std::uint32_t kErrorNumberBase = 0x80040000U;

// What is said of a number that nobody has a text for.
inline constexpr const char* kUndetermined = "Undetermined";

// The server's own text of a code, or the empty text.
std::string ErrorText(std::int32_t code);

// The public code of a mail system's own number, which is set to 0 when it lies outside -100000 to
// 100000.
std::int32_t ErrorBase(MailSystemId system, std::int32_t& interfaceError);

// A public code taken apart again; one that is no mail system's is the server's own.
struct CodeOrigin {
  MailSystemId system;
  std::int32_t interfaceError;
};
CodeOrigin OriginOfCode(std::int64_t code);

}  // namespace quillon
