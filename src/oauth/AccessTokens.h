// Where a login gets its access token from (OAuth 2, RFC 6749).
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace quillon {

// How a provider of accounts is asked. Texts are UTF-8; without an address nothing is asked.
struct OAuthAccount {
  std::string tokenUrl;
  std::string deviceUrl;
  std::string clientId;
  std::string clientSecret;  // some providers have one, others none
  std::string refreshToken;
  std::string scope;

  bool operator==(const OAuthAccount&) const = default;
};

// One of the two is set. The failure is a sentence, with the provider's own words where it has said
// any, and without secrets.
struct AccessToken {
  std::string token;
  std::string failure;
};

class AccessTokens {
 public:
  // Destroying it gives the request up: the result will not come.
  class Request {
   public:
    virtual ~Request() = default;
  };
  using Result = std::function<void(AccessToken token)>;

  virtual ~AccessTokens() = default;

  // The result comes from the event loop, once, also when the token is there already.
  virtual std::unique_ptr<Request> Obtain(const OAuthAccount& account, Result result) = 0;

  // A server has refused the token: the next request gets another one.
  virtual void Forget(const OAuthAccount& account) = 0;
};

}  // namespace quillon
