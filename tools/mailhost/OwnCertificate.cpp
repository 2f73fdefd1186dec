#include "OwnCertificate.h"

#include <array>
#include <openssl/ec.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <stdexcept>
#include <utility>

namespace mailhost {

namespace {

constexpr long kDay = 24 * 60 * 60;

using Extension = std::pair<int, const char*>;

void Check(bool good) {
  if (!good) throw std::runtime_error("a certificate cannot be made: " + OpenSslReason());
}

KeyPtr MakeKey() {
  KeyPtr key(EVP_EC_gen("P-256"));
  Check(key != nullptr);
  return key;
}

void SetSerial(X509* certificate) {
  std::array<unsigned char, 8> bytes{};
  Check(RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1);
  bytes.front() &= 0x7F;
  const std::unique_ptr<BIGNUM, OpenSslDeleter<BN_free>> number(
      BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
  Check(number != nullptr &&
        BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr);
}

void SetName(X509* certificate, const char* name) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(name);
  Check(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8, bytes,
                                   -1, -1, 0) == 1);
}

void Add(X509* certificate, X509* issuer, const Extension& extension) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const std::unique_ptr<X509_EXTENSION, OpenSslDeleter<X509_EXTENSION_free>> made(
      X509V3_EXT_conf_nid(nullptr, &context, extension.first, extension.second));
  Check(made != nullptr && X509_add_ext(certificate, made.get(), -1) == 1);
}

// Both numbers of the signature are as long as the key. Wine takes one whose leading zeros are left
// out, as they are in one of 128, for a wrong signature.
bool HasLongNumbers(const X509* certificate) {
  const ASN1_BIT_STRING* bytes = nullptr;
  X509_get0_signature(&bytes, nullptr, certificate);
  const unsigned char* data = ASN1_STRING_get0_data(bytes);
  const std::unique_ptr<ECDSA_SIG, OpenSslDeleter<ECDSA_SIG_free>> numbers(
      d2i_ECDSA_SIG(nullptr, &data, ASN1_STRING_length(bytes)));
  Check(numbers != nullptr);
  constexpr int kLength = 32;  // of P-256
  return BN_num_bytes(ECDSA_SIG_get0_r(numbers.get())) == kLength &&
         BN_num_bytes(ECDSA_SIG_get0_s(numbers.get())) == kLength;
}

// Without an issuer the certificate signs itself.
template <std::size_t kCount>
CertificatePtr Issue(const char* name, EVP_PKEY* key, X509* issuer, EVP_PKEY* issuerKey,
                     const std::array<Extension, kCount>& extensions) {
  CertificatePtr made(X509_new());
  Check(made != nullptr && X509_set_version(made.get(), X509_VERSION_3) == 1);
  X509* const above = issuer != nullptr ? issuer : made.get();
  SetSerial(made.get());
  SetName(made.get(), name);
  Check(X509_set_issuer_name(made.get(), X509_get_subject_name(above)) == 1);
  Check(X509_set_pubkey(made.get(), key) == 1);
  X509_gmtime_adj(X509_getm_notBefore(made.get()), -kDay);
  X509_gmtime_adj(X509_getm_notAfter(made.get()), 365 * kDay);
  for (const Extension& extension : extensions) Add(made.get(), above, extension);
  do {
    Check(X509_sign(made.get(), issuerKey, EVP_sha256()) != 0);
  } while (!HasLongNumbers(made.get()));
  return made;
}

}  // namespace

OwnCertificate MakeOwnCertificate() {
  const KeyPtr rootKey = MakeKey();
  OwnCertificate own{MakeKey(), nullptr, nullptr};
  own.root = Issue("mailhost root", rootKey.get(), nullptr, rootKey.get(),
                   std::array<Extension, 3>{{{NID_basic_constraints, "critical,CA:TRUE"},
                                             {NID_key_usage, "critical,keyCertSign,cRLSign"},
                                             {NID_subject_key_identifier, "hash"}}});
  own.certificate =
      Issue("mail.example.com", own.key.get(), own.root.get(), rootKey.get(),
            std::array<Extension, 5>{
                {{NID_basic_constraints, "critical,CA:FALSE"},
                 {NID_key_usage, "critical,digitalSignature"},
                 {NID_ext_key_usage, "serverAuth"},
                 {NID_authority_key_identifier, "keyid"},
                 {NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost,DNS:mail.example.com"}}});
  return own;
}

}  // namespace mailhost
