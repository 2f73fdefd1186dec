// The server's half of a TLS connection in memory, with OpenSSL.
#pragma once

#include <memory>
#include <openssl/ssl.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/posix/TestCertificates.h"

namespace quillon::testing {

class TlsServer {
 public:
  // Speaks that version alone.
  TlsServer(const IssuedCertificate& own, const std::vector<IssuedCertificate>& others,
            int version = TLS1_2_VERSION);

  // Takes what the client has sent.
  void Take(std::string_view bytes);
  bool Secured() const { return SSL_is_init_finished(ssl_.get()) == 1; }
  void Say(std::string_view text);
  void Close();
  // What the client must be sent, and what it has said; both are gone then.
  std::string TakeOutput();
  std::string TakeText() { return std::exchange(text_, {}); }
  // The client has ended the connection in due form.
  bool Ended() const { return (SSL_get_shutdown(ssl_.get()) & SSL_RECEIVED_SHUTDOWN) != 0; }
  std::string ServerName() const;
  SSL* Handle() { return ssl_.get(); }

 private:
  std::shared_ptr<SSL_CTX> context_;
  std::shared_ptr<SSL> ssl_;
  BIO* in_;  // both belong to the connection
  BIO* out_;
  std::string text_;
};

}  // namespace quillon::testing
