// Access tokens from the provider that the account names, by its refresh token (RFC 6749, 6). Each
// token is kept until shortly before its end, and everybody who wants one at the same time shares
// the request.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "oauth/AccessTokens.h"
#include "ports/EventLoop.h"
#include "ports/HttpsClient.h"

namespace quillon {

class ProviderTokens final : public AccessTokens {
 public:
  // The provider has replaced the refresh token of the account, as it was last known. It should be
  // stored: the old one may be good no more.
  using Replaced =
      std::function<void(const OAuthAccount& account, const std::string& refreshToken)>;

  ProviderTokens(EventLoop& loop, HttpsClient& https, Replaced replaced)
      : loop_(loop), https_(https), replaced_(std::move(replaced)) {}

  std::unique_ptr<Request> Obtain(const OAuthAccount& account, Result result) override;
  void Forget(const OAuthAccount& account) override;

 private:
  struct Waiting {
    Result result;
  };
  class Handle;
  struct Entry {
    OAuthAccount account;
    // The account's and those that came in its place: the last one is good, and whoever has read
    // the configuration earlier still comes with another.
    std::vector<std::string> refreshTokens;
    std::string token;
    TickCount goodUntil = 0;
    // Goes on when nobody waits any more: a new refresh token in the answer may not be lost.
    std::unique_ptr<HttpsClient::Request> request;
    std::vector<std::shared_ptr<Waiting>> waiting;
  };

  Entry* Find(const OAuthAccount& account);
  Entry& Add(const OAuthAccount& account);
  void Ask(Entry& entry);
  void OnAnswer(Entry& entry, TickCount asked, const HttpsAnswer& answer);
  void Deliver(const std::shared_ptr<Waiting>& waiting, const AccessToken& token);

  EventLoop& loop_;
  HttpsClient& https_;
  Replaced replaced_;
  std::list<Entry> entries_;
};

}  // namespace quillon
