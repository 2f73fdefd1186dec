// What a server says it can do, in its reply to EHLO (RFC 5321, 4.1.1.1).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillon {

struct SmtpCapabilities {
  bool startTls = false;                // RFC 3207
  bool pipelining = false;              // RFC 2920
  bool eightBitMime = false;            // RFC 6152
  bool utf8 = false;                    // SMTPUTF8, RFC 6531
  bool size = false;                    // RFC 1870
  std::uint64_t mostBytes = 0;          // of a message; 0: the server does not tell
  bool deliveryStatus = false;          // RFC 3461
  std::vector<std::string> mechanisms;  // RFC 4954
  std::vector<std::string> entries;     // as the server wrote them
};

// Of the lines of a positive reply; what is not understood is left out.
SmtpCapabilities ReadSmtpCapabilities(const std::vector<std::string>& lines);

}  // namespace quillon
