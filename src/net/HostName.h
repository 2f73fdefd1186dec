// The host that was meant against the names in a certificate (RFC 9525, RFC 5280 section 4.2.1.6).
//
// The same on every system, because the systems do not agree about addresses. Names are compared as
// they stand, in ASCII: an international name has to be given in the form of its look-up ("xn--").
// A common name is never taken for a host name, as nobody takes it any more.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// What a host name that is a numeric address stands for: 4 bytes, or 16 for IPv6, also in brackets
// and with a zone. Empty for every other name.
std::string AddressBytes(std::string_view host);

// What the server is told of the host name that it was reached by (RFC 6066, section 3); empty for
// an address.
std::string ServerNameFor(std::string_view host);

// Whether a DNS name of a certificate is that of the host. "*" stands for one whole label in front
// of at least two others.
bool MatchesDnsName(std::string_view pattern, std::string_view host);

// Whether one of the names, or for a numeric host of the addresses (as bytes), is the host.
bool MatchesHost(const std::vector<std::string>& dnsNames,
                 const std::vector<std::string>& addresses, std::string_view host);

}  // namespace quillon
