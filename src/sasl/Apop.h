// APOP (RFC 1939, 7): a POP3 login whose challenge stands in the server's greeting.
#pragma once

#include <string>
#include <string_view>

#include "ports/Crypto.h"

namespace quillon {

// The first "<...@...>" of a greeting, with its brackets; empty when there is none, and the server
// knows no APOP. One with other characters than those of a message identifier is none: a server
// that may choose any bytes can find out the beginning of the password by collisions of MD5.
std::string_view ApopTimestamp(std::string_view greeting);

// The second argument of the command. May throw CryptoError.
std::string ApopDigest(const Crypto& crypto, std::string_view timestamp, std::string_view password);

}  // namespace quillon
