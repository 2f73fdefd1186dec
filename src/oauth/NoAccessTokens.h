// For programs that log in to no provider of accounts.
#pragma once

#include <memory>
#include <utility>

#include "oauth/AccessTokens.h"
#include "ports/EventLoop.h"

namespace quillon {

class NoAccessTokens final : public AccessTokens {
 public:
  explicit NoAccessTokens(EventLoop& loop) : loop_(loop) {}

  std::unique_ptr<Request> Obtain(const OAuthAccount&, Result result) override {
    auto request = std::make_unique<Refusal>();
    loop_.Post([alive = std::weak_ptr<int>(request->alive), result = std::move(result)] {
      if (!alive.expired()) result({{}, "This program gets no access tokens."});
    });
    return request;
  }
  void Forget(const OAuthAccount&) override {}

 private:
  struct Refusal final : Request {
    std::shared_ptr<int> alive = std::make_shared<int>();
  };

  EventLoop& loop_;
};

}  // namespace quillon
