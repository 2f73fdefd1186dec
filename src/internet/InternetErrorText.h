// The texts of the error numbers of both sessions. A number without a row has no text.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// What a failed login is called.
inline constexpr const char* kSmtpLoginFailed = "Failed to Logon to SMTP server.";
inline constexpr const char* kPopLoginFailed = "Failed to Logon to POP server";

// Whether the number is one of encryption and login. Programs that are older than those know none
// of them, so their text alone tells what to do.
bool IsSecurityError(std::int32_t number);

std::string SmtpErrorText(std::int32_t number);

// `serverWords`: what the POP server last said when it refused something.
std::string PopErrorText(std::int32_t number, const std::string& serverWords);

}  // namespace quillon
