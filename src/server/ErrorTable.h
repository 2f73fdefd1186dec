// The public error numbers: the server's own codes and texts, and the place of each mail system's
// numbers among them.
#pragma once

#include <cstdint>
#include <string>

#include "mail/MailSystem.h"

namespace quillon {

// Every public number is this plus a code.
inline constexpr std::uint32_t kErrorNumberBase = 0x80040000U;

namespace error_code {

inline constexpr std::int32_t kFileAccess = 75;  // a file could not be read or written
inline constexpr std::int32_t kNoMailSystem = 515;
inline constexpr std::int32_t kNoAddressees = 516;
inline constexpr std::int32_t kTooManyBcc = 517;
inline constexpr std::int32_t kTooManyCc = 518;
inline constexpr std::int32_t kTooManyTo = 519;
inline constexpr std::int32_t kTooManyAttachments = 520;
inline constexpr std::int32_t kNoAttachment = 521;
inline constexpr std::int32_t kUserAborted = 522;
inline constexpr std::int32_t kInvalidValue = 529;
inline constexpr std::int32_t kNotSupported = 530;
inline constexpr std::int32_t kNoHeaders = 532;
inline constexpr std::int32_t kBadMessageIndex = 533;
inline constexpr std::int32_t kEncoding = 535;
inline constexpr std::int32_t kNotRegistered = 538;
inline constexpr std::int32_t kProcessAborted = 539;
inline constexpr std::int32_t kRegistration = 542;
inline constexpr std::int32_t kReservedHeader = 545;
inline constexpr std::int32_t kFileNotSpecified = 547;
inline constexpr std::int32_t kNoFile = 548;
inline constexpr std::int32_t kDataMissing = 551;

}  // namespace error_code

// The server's own text of a code, or the empty text.
std::string ErrorText(std::int32_t code);

// The public code of a mail system's own number, which is set to 0 when it lies outside -100000 to
// 100000.
std::int32_t ErrorBase(MailSystemId system, std::int32_t& interfaceError);

// A public code taken apart again. Not the mirror image of ErrorBase, on purpose: clients rely on
// both as they are.
struct CodeOrigin {
  MailSystemId system;
  std::int32_t interfaceError;
};
CodeOrigin OriginOfCode(std::int64_t code);

}  // namespace quillon
