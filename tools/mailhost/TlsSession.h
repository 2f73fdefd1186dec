// The server's side of TLS for one connection, without any I/O: bytes of the client go in, text of
// the client comes out, and the other way round.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "OpenSsl.h"

namespace mailhost {

class TlsSession {
 public:
  enum class State {
    kHandshake,
    kOpen,
    kEnded,   // the client has said that no more comes
    kFailed,  // see Failure()
  };

  explicit TlsSession(SSL_CTX* context);

  // Takes bytes from the client and appends the text they hold to `text`.
  State Receive(std::string_view bytes, std::string& text);
  State Now() const { return state_; }
  const std::string& Failure() const { return failure_; }

  // Makes records of `text`; only while open.
  void Seal(std::string_view text);
  // Says that no more text comes.
  void SealEnd();
  // The bytes for the client since the last call.
  std::string TakeOutput();

  // "TLSv1.3 TLS_AES_256_GCM_SHA384 for mail.example.com", once the handshake is done.
  std::string Description() const;
  // What binds a login to this connection (RFC 5929): `type` is "tls-server-end-point" or
  // "tls-unique". Empty when this connection has none of the type.
  std::optional<std::string> Binding(std::string_view type) const;

 private:
  State Fail();
  std::string EndPointBinding() const;

  SslPtr ssl_;
  BIO* in_;   // owned by ssl_
  BIO* out_;  // owned by ssl_
  State state_ = State::kHandshake;
  std::string failure_;
};

}  // namespace mailhost
