// A SASL mechanism (RFC 4422), which says how a client shows who it is. It knows neither lines nor
// base64, and reads and writes nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillon {

// Bytes for the server, or why the login has come to its end, as a sentence for the user.
struct SaslStep {
  std::string response;
  std::string failure;

  bool Failed() const { return !failure.empty(); }
};

inline SaslStep Respond(std::string response) {
  return {std::move(response), {}};
}
inline SaslStep FailLogin(std::string reason) {
  return {{}, std::move(reason)};
}

// For one login. After a failure it is not asked again. Each function may throw CryptoError.
class Mechanism {
 public:
  virtual ~Mechanism() = default;

  virtual std::string_view Name() const = 0;

  // What the client says first; none when the first word is the server's. Called before anything
  // else, once.
  virtual std::optional<SaslStep> Begin() = 0;

  // Whether servers have to say something, which means nothing, before they hear that.
  virtual bool WaitsForServer() const { return false; }

  virtual SaslStep Answer(std::string_view challenge) = 0;

  // The server says that the login has succeeded, with data of the mechanism where the protocol has
  // room for them. Fails when that cannot be true, as with a server that has not shown that it
  // knows the password though the mechanism asks for it; the response means nothing.
  virtual SaslStep Succeeded(std::string_view finalData) = 0;

  // What the server gave as its reason for a refusal that is still to come, fit to be shown.
  virtual std::string ServerReason() const { return {}; }
};

}  // namespace quillon
