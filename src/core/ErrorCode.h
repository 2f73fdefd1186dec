// The server's own error codes: with the numbers of the mail systems, which are folded in around
// them, they make up the public errors. Their texts are in server/ErrorTable.cpp.
#pragma once

#include <cstdint>

namespace quillon::error_code {

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
inline constexpr std::int32_t kZipping = 534;
inline constexpr std::int32_t kEncoding = 535;
inline constexpr std::int32_t kNotRegistered = 538;
inline constexpr std::int32_t kProcessAborted = 539;
inline constexpr std::int32_t kInProgress = 540;
inline constexpr std::int32_t kInNotification = 541;
inline constexpr std::int32_t kRegistration = 542;
inline constexpr std::int32_t kLoginData = 544;
inline constexpr std::int32_t kReservedHeader = 545;
inline constexpr std::int32_t kNoPostOffice = 546;
inline constexpr std::int32_t kFileNotSpecified = 547;
inline constexpr std::int32_t kNoFile = 548;
inline constexpr std::int32_t kWindows16 = 550;
inline constexpr std::int32_t kDataMissing = 551;
inline constexpr std::int32_t kNoMailObject = 750;
inline constexpr std::int32_t kAddressBookClosed = 751;
inline constexpr std::int32_t kAddressBookNoSystem = 752;
inline constexpr std::int32_t kNoAddressBook = 753;
inline constexpr std::int32_t kAddressBookFunction = 754;
inline constexpr std::int32_t kDialer = 7000;  // the numbers of dial-up begin here

}  // namespace quillon::error_code
