// What the program itself reads of an X.509 certificate (RFC 5280): whom it is for, who issued it,
// and how strong it is. Everything else about a chain is the system's to judge.
//
// The reader is strict: bytes that are not DER, or fields that are not there, make no certificate.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

enum class KeyType { Rsa, EllipticCurve, Edwards, Other };
enum class SignatureDigest { Md5, Sha1, Sha256, Sha384, Sha512, None, Unknown };

struct Certificate {
  // For people: the common name, or the organization where there is none, as UTF-8 in one line.
  std::string subject;
  std::string issuer;

  // The subject's alternative names.
  std::vector<std::string> dnsNames;   // as they stand: anything may be in them
  std::vector<std::string> addresses;  // 4 or 16 bytes each

  // Seconds since 1970, UTC.
  std::int64_t notBefore = 0;
  std::int64_t notAfter = 0;

  KeyType keyType = KeyType::Other;
  int keyBits = 0;  // 0 when unknown
  // Digests older than SHA-256 other than SHA-1 count as MD5; an algorithm without one (Ed25519)
  // has none.
  SignatureDigest signatureDigest = SignatureDigest::Unknown;

  std::string publicKey;  // the SubjectPublicKeyInfo, in DER
};

std::optional<Certificate> ReadCertificate(std::string_view encoded);

}  // namespace quillon
