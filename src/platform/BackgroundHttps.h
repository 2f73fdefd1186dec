// HTTPS requests on threads of their own, for systems whose interface blocks.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "ports/EventLoop.h"
#include "ports/HttpsClient.h"

namespace quillon {

class BackgroundHttps final : public HttpsClient {
 public:
  // Called on any thread, also when the client is gone already. It should end when the patience of
  // the form does, but nobody waits for it.
  using BlockingPost = std::function<HttpsAnswer(const HttpsForm& form)>;

  // The requests must not outlive the loop.
  BackgroundHttps(EventLoop& loop, BlockingPost post) : loop_(loop), post_(std::move(post)) {}

  std::unique_ptr<Request> Post(const HttpsForm& form, Result result) override;

 private:
  EventLoop& loop_;
  BlockingPost post_;
};

}  // namespace quillon
