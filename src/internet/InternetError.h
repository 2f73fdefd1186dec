// The numbers that an operation of Internet mail can come to, beside the reply codes of SMTP
// servers and what is thrown as ServerError.
#pragma once

#include <cstdint>

namespace quillon::internet_error {

inline constexpr std::int32_t kSuccess = -1;

// Of both protocols.
inline constexpr std::int32_t kNotConnected = 2;   // no answer in time, refused, or no such host
inline constexpr std::int32_t kNotStarted = 4;     // the system refused to start, eleven times
inline constexpr std::int32_t kTimedOut = 27;      // no reply
inline constexpr std::int32_t kSendTimedOut = 28;  // nothing could be written
inline constexpr std::int32_t kConnectionLost = 29;
inline constexpr std::int32_t kOverflow = 30;
inline constexpr std::int32_t kCertificateRefused = 40;
inline constexpr std::int32_t kNoEncryption = 41;    // the server offers none
inline constexpr std::int32_t kSecuringFailed = 42;  // the handshake
inline constexpr std::int32_t kLoginRefused = 43;    // also a reply of 535
inline constexpr std::int32_t kNoCommonLogin = 44;   // method
inline constexpr std::int32_t kNoAccessToken = 45;

// Of SMTP.
inline constexpr std::int32_t kInvalidSmtpReply = 3;
inline constexpr std::int32_t kNoRecipients = 9;
inline constexpr std::int32_t kBadRecipient = 10;
inline constexpr std::int32_t kTextFailed = 11;
inline constexpr std::int32_t kAttachmentsFailed = 12;
inline constexpr std::int32_t kTerminatorFailed = 13;
inline constexpr std::int32_t kSomeRefused = 20;
inline constexpr std::int32_t kNoUtf8Addresses = 46;
inline constexpr std::int32_t kInvalidSender = 555;
inline constexpr std::int32_t kNotLocal = 556;

// Of POP3.
inline constexpr std::int32_t kInvalidPopReply = 4;
inline constexpr std::int32_t kNotPop = 8;
inline constexpr std::int32_t kNameRefused = 14;
inline constexpr std::int32_t kPasswordRefused = 15;
inline constexpr std::int32_t kMaildropBusy = 16;
inline constexpr std::int32_t kDeleteFailed = 17;
inline constexpr std::int32_t kQuitFailed = 20;
inline constexpr std::int32_t kRetrieveFailed = 21;
inline constexpr std::int32_t kStatisticsFailed = 23;
inline constexpr std::int32_t kTopFailed = 24;
inline constexpr std::int32_t kIdentifiersFailed = 25;
inline constexpr std::int32_t kCannotWrite = 26;

}  // namespace quillon::internet_error
