// Certificates as tests want them, good and bad, made with OpenSSL in memory.
#pragma once

#include <memory>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillon::testing {

struct IssuedCertificate {
  std::shared_ptr<EVP_PKEY> key;
  std::shared_ptr<X509> certificate;

  std::string Der() const;
};

enum class TestKey { P256, Rsa2048, Rsa1024, Ed25519 };

struct CertificateOrder {
  std::string commonName = "mail.example.com";
  std::string names = "DNS:mail.example.com";  // in OpenSSL's notation; empty: none
  const IssuedCertificate* issuer = nullptr;   // none: signed by itself
  TestKey key = TestKey::P256;
  const EVP_MD* digest = EVP_sha256();
  int firstDay = -1;  // counted from today
  int lastDay = 30;
  // Further extensions: OpenSSL's name or number, and the value in its notation.
  std::vector<std::pair<std::string, std::string>> extensions = {};
};

IssuedCertificate Issue(const CertificateOrder& order);

// A root with the given name, which issues what may issue others when asked for.
IssuedCertificate IssueRoot(const std::string& name);

}  // namespace quillon::testing
