#include "support/posix/TestCertificates.h"

#include <array>
#include <atomic>
#include <openssl/ec.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace quillon::testing {

namespace {

std::shared_ptr<EVP_PKEY> MakeKey(TestKey kind) {
  EVP_PKEY* key = nullptr;
  switch (kind) {
    case TestKey::P256:
      key = EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256");
      break;
    case TestKey::Rsa2048:
      key = EVP_RSA_gen(2048);
      break;
    case TestKey::Rsa1024:
      key = EVP_RSA_gen(1024);
      break;
    case TestKey::Ed25519:
      key = EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519");
      break;
  }
  return {key, EVP_PKEY_free};
}

void AddExtension(X509* certificate, X509* issuer, const std::string& name,
                  const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509V3_set_ctx_nodb(&context);
  auto* const extension = X509V3_EXT_nconf(nullptr, &context, name.c_str(), value.c_str());
  if (extension == nullptr) throw std::invalid_argument("no extension: " + name + "=" + value);
  X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

}  // namespace

std::string IssuedCertificate::Der() const {
  unsigned char* bytes = nullptr;
  const int size = i2d_X509(certificate.get(), &bytes);
  std::string der(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  OPENSSL_free(bytes);
  return der;
}

IssuedCertificate Issue(const CertificateOrder& order) {
  static std::atomic<long> serial = 1;
  IssuedCertificate made{MakeKey(order.key), {X509_new(), X509_free}};
  X509* const certificate = made.certificate.get();
  X509_set_version(certificate, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate), serial++);
  X509_time_adj_ex(X509_getm_notBefore(certificate), order.firstDay, 0, nullptr);
  X509_time_adj_ex(X509_getm_notAfter(certificate), order.lastDay, 0, nullptr);
  const auto* const name = reinterpret_cast<const unsigned char*>(order.commonName.c_str());
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8, name, -1, -1,
                             0);
  const auto& issuer = order.issuer != nullptr ? *order.issuer : made;
  X509_set_issuer_name(certificate, X509_get_subject_name(issuer.certificate.get()));
  X509_set_pubkey(certificate, made.key.get());
  if (!order.names.empty()) {
    AddExtension(certificate, issuer.certificate.get(), "subjectAltName", order.names);
  }
  for (const auto& [extension, value] : order.extensions) {
    AddExtension(certificate, issuer.certificate.get(), extension, value);
  }
  const bool hashless = EVP_PKEY_is_a(issuer.key.get(), "ED25519") == 1;
  if (X509_sign(certificate, issuer.key.get(), hashless ? nullptr : order.digest) == 0) {
    throw std::runtime_error("a certificate cannot be signed");
  }
  return made;
}

IssuedCertificate IssueRoot(const std::string& name) {
  CertificateOrder order;
  order.commonName = name;
  order.names.clear();
  order.extensions = {{"basicConstraints", "critical,CA:TRUE"},
                      {"keyUsage", "critical,keyCertSign,cRLSign"}};
  return Issue(order);
}

}  // namespace quillon::testing
