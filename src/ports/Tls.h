// TLS as the system has it, without I/O: a session turns records into text and text into records,
// and whoever owns it moves the bytes (net/SecuredStream.h). Whether the peer is the one that was
// meant is asked behind the handshake, of what the peer has shown (net/CertificateCheck.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/ByteQueue.h"

namespace quillon {

enum class TlsStatus {
  Ok,         // the handshake has ended; one record was taken, which may have held no text; sealed
  MoreInput,  // it goes on when more has come
  Closed,     // the peer has ended the secured connection in due form
  Failed,     // for good; Reason tells why
};

// The numbers that TLS itself has for its versions.
inline constexpr int kTls12 = 0x0303;
inline constexpr int kTls13 = 0x0304;

struct TlsFacts {
  int version = 0;  // 0 when the system does not say
  std::string cipher;
  int bits = 0;  // of the cipher's key
  // Certificates in DER, the peer's own first. The others come as the peer has sent them: some may
  // be missing, too many or in any order.
  std::vector<std::string> chain;
};

struct TlsSettings {
  std::string serverName;  // for the server to choose its certificate by; empty: none is told
  // Shown to a server that asks for one: the thumbprint (SHA-1, 40 hexadecimal digits, in groups or
  // not) or a part of the subject of a certificate in the user's store that has its key there, in
  // UTF-8. Empty: none. Without such a certificate the handshake fails.
  std::string clientCertificate = {};
};

// The client's half of one connection.
class TlsSession {
 public:
  TlsSession() = default;
  virtual ~TlsSession() = default;
  TlsSession(const TlsSession&) = delete;
  TlsSession& operator=(const TlsSession&) = delete;

  // Both take whole records off the front of `input`, which must hold nothing else, and append to
  // `output` what the peer must be sent, also when they fail: then it is an alert. Open is called
  // until it wants more, with nothing in the queue too, because a system may hold records itself.
  virtual TlsStatus Handshake(ByteQueue& input, std::string& output) = 0;
  virtual TlsStatus Open(ByteQueue& input, std::string& text, std::string& output) = 0;

  // Encrypts at most MaxText() bytes, behind the handshake.
  virtual TlsStatus Seal(std::string_view text, std::string& output) = 0;
  virtual std::size_t MaxText() const = 0;

  // Appends the end of the secured connection.
  virtual void Shutdown(std::string& output) = 0;

  // Behind the handshake.
  virtual TlsFacts Facts() = 0;
  // The channel binding tls-unique of RFC 5929; empty when there is none, as in TLS 1.3.
  virtual std::string UniqueBinding() = 0;

  virtual const std::string& Reason() const = 0;
};

// What can be wrong with a certificate.
enum class CertificateFault {
  None,
  Missing,     // none was shown
  Unreadable,  // it is no X.509 certificate
  WrongPin,    // it is not the one that was pinned
  SelfSigned,
  UnknownIssuer,  // the chain ends in a certificate that is not trusted here
  Incomplete,     // the chain ends before one that is
  Expired,
  NotYetValid,
  WrongHost,
  WrongUsage,   // it is not meant for a server
  WrongIssuer,  // a certificate in the chain may not issue the one below it
  BadSignature,
  WeakKey,
  WeakSignature,
  Revoked,
  RevocationUnknown,  // it was asked for and could not be found out
  Refused,            // by the system, for another reason
};

struct CertificateTrust {
  bool revocation = false;  // ask the issuers whether they have taken a certificate back
  std::string onlyRoot;     // DER; when given, the only root that is trusted
};

// What the system thinks of a chain, the host name apart.
struct ChainVerdict {
  CertificateFault fault = CertificateFault::Refused;
  std::size_t place = 0;          // of the certificate with the fault: 0 is the peer's own
  std::string detail;             // the system's own words or number
  std::vector<std::string> path;  // as far as it was built, in DER; the trusted root is the last
};

class TlsLibrary {
 public:
  TlsLibrary() = default;
  virtual ~TlsLibrary() = default;
  TlsLibrary(const TlsLibrary&) = delete;
  TlsLibrary& operator=(const TlsLibrary&) = delete;

  // Never null: what the system cannot do becomes a handshake that fails.
  virtual std::unique_ptr<TlsSession> MakeSession(const TlsSettings& settings) = 0;

  // May block for minutes, when the system fetches certificates or asks issuers over the network:
  // to be called on a thread of its own, with copies. Callable from any thread.
  virtual ChainVerdict CheckChain(const std::vector<std::string>& chain,
                                  const CertificateTrust& trust) = 0;
};

}  // namespace quillon
