// The server's side of one login by SASL (RFC 4422), base64 and the lines of the protocol taken
// off.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Service.h"
#include "TlsSession.h"

namespace mailhost {

struct LoginStep {
  enum class Kind { kChallenge, kAccepted, kRefused } kind;
  std::string challenge{};
};

class LoginMechanism {
 public:
  virtual ~LoginMechanism() = default;
  // What the client says, and at first nothing when it has begun without a response.
  virtual LoginStep Next(std::optional<std::string_view> response) = 0;
};

// What a login may know of its connection.
struct LoginPlace {
  const Account& account;
  const TlsSession* tls;  // null without TLS
  bool offersBinding;     // one of the mechanisms that bind
};

struct MechanismRow {
  std::string_view name;
  bool needsPassword;  // cannot take any login, but must know the password
  bool needsToken;
  bool binds;  // to the TLS connection
  std::unique_ptr<LoginMechanism> (*make)(const LoginPlace& place);
};

// Null when there is no mechanism of this name, in capitals.
const MechanismRow* FindMechanism(std::string_view name);

// Names of those mechanisms of the service that can be had on a connection.
std::vector<std::string> OfferedMechanisms(const Service& service, const TlsSession* tls);

// A name as RFC 5802 5.1 writes it, where "=2C" and "=3D" stand for "," and "=".
std::optional<std::string> PlainName(std::string_view written);

std::unique_ptr<LoginMechanism> MakePlain(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeLogin(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeCramMd5(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeXOAuth2(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeOAuthBearer(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeScramSha1(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeScramSha1Plus(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeScramSha256(const LoginPlace& place);
std::unique_ptr<LoginMechanism> MakeScramSha256Plus(const LoginPlace& place);

}  // namespace mailhost
