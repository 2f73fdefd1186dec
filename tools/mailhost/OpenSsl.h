// Owners of what OpenSSL hands out, and its reasons in words.
#pragma once

#include <memory>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <string>

namespace mailhost {

template <auto kFree>
struct OpenSslDeleter {
  template <typename T>
  void operator()(T* owned) const {
    kFree(owned);
  }
};

using ContextPtr = std::unique_ptr<SSL_CTX, OpenSslDeleter<SSL_CTX_free>>;
using SslPtr = std::unique_ptr<SSL, OpenSslDeleter<SSL_free>>;
using CertificatePtr = std::unique_ptr<X509, OpenSslDeleter<X509_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, OpenSslDeleter<EVP_PKEY_free>>;

// What OpenSSL says of the last failure; forgets all of them.
inline std::string OpenSslReason() {
  const unsigned long code = ERR_peek_last_error();
  ERR_clear_error();
  const char* const reason = code != 0 ? ERR_reason_error_string(code) : nullptr;
  return reason != nullptr ? reason : "no reason given";
}

}  // namespace mailhost
