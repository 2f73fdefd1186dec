// Whether the peer of a secured connection is the one that was meant, and why not, in words for
// those who have to do something about it.
//
// What the system thinks of the chain comes first; then keys and signatures that are too weak
// today, which not every system notices; then the host name. A pinned certificate is the one that
// the administrator has looked at: it is taken as it is, whoever issued it, and no other is.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/Crypto.h"
#include "ports/Tls.h"

namespace quillon {

struct CertificatePin {
  bool ofKey = false;  // of the public key, which a renewed certificate may keep
  std::string digest;  // 32 bytes
};

// 64 hexadecimal digits, for a key behind "key:".
std::optional<CertificatePin> ReadPin(std::string_view text);

struct CertificateDemand {
  std::string host;  // the one that was connected to
  std::optional<CertificatePin> pin;
  CertificateTrust trust;
};

struct CertificateVerdict {
  CertificateFault fault = CertificateFault::None;
  // Empty when all is well; else what is wrong, whom the certificate is for, who issued it, and
  // what can be done. Sentences in ASCII or UTF-8.
  std::string text;

  bool Good() const noexcept { return fault == CertificateFault::None; }
};

// Blocks as TlsLibrary::CheckChain does, and may be called where that may. Does not throw.
CertificateVerdict CheckCertificate(TlsLibrary& library, const Crypto& crypto,
                                    const std::vector<std::string>& chain,
                                    const CertificateDemand& demand);

// The form of a pin, for a certificate in DER: what an administrator compares and copies.
std::string CertificatePinText(const Crypto& crypto, std::string_view certificate);

// Whom a certificate in DER is for, who issued it and how long it is valid, as a sentence; empty
// when it cannot be read.
std::string CertificatePartiesText(std::string_view certificate);

}  // namespace quillon
