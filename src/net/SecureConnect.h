// Makes a connection secure: the handshake, then the check of the server's certificate on a thread
// of its own, because a system may ask others about it. No text passes before the verdict.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/BackgroundCall.h"
#include "net/CertificateCheck.h"
#include "net/SecuredStream.h"
#include "ports/Crypto.h"
#include "ports/Network.h"
#include "ports/Tls.h"

namespace quillon {

class SecureConnect {
 public:
  enum class Outcome { Secured, HandshakeFailed, CertificateRefused };

  struct Result {
    Outcome outcome = Outcome::Secured;
    std::unique_ptr<ByteStream> stream;  // when secured
    std::string reason;                  // else: the end of a sentence, or sentences (certificate)
    TlsFacts facts;                      // as far as the handshake came
    std::string uniqueBinding;           // tls-unique of RFC 5929; may be empty
  };
  using Done = std::function<void(Result result)>;

  // The library and the digests outlive every check, which nobody waits for: they live as long as
  // the process.
  SecureConnect(EventLoop& loop, TlsLibrary& library, const Crypto& crypto,
                BackgroundRunner runInBackground);

  // `plain` is connected, and nothing is read from it that belongs to the handshake. The result
  // comes from the loop, once, unless cancelled. There is no time limit.
  // `clientCertificate` is that of TlsSettings.
  void Start(std::unique_ptr<ByteStream> plain, CertificateDemand demand,
             const std::string& clientCertificate, Done done);
  void Cancel();

 private:
  void OnHandshake(bool secured);
  void OnVerdict(const CertificateVerdict& verdict);
  void Finish(Result result);

  EventLoop& loop_;
  TlsLibrary& library_;
  const Crypto& crypto_;
  const BackgroundRunner runInBackground_;
  CertificateDemand demand_;
  Done done_;
  std::unique_ptr<SecuredStream> stream_;
  std::optional<BackgroundCall> check_;
};

// "TLS 1.2".
std::string TlsVersionText(int version);

}  // namespace quillon
