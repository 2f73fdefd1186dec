#include "platform/BackgroundHttps.h"

#include <mutex>
#include <system_error>
#include <utility>

#include "core/BackgroundThread.h"

namespace quillon {
namespace {

// Shared by the request and its thread, which may be the last to let go of it.
struct PendingPost {
  PendingPost(EventLoop& eventLoop, HttpsClient::Result receiver)
      : loop(&eventLoop), result(std::move(receiver)) {}

  std::mutex mutex;
  EventLoop* loop;  // under the mutex; null: nobody waits any more
  HttpsClient::Result result;
};

// On the loop's thread. The receiver may drop the request inside.
void Finish(const std::shared_ptr<PendingPost>& pending, HttpsAnswer answer) {
  if (const auto call = std::exchange(pending->result, nullptr)) call(std::move(answer));
}

// On any thread.
void Deliver(const std::shared_ptr<PendingPost>& pending, HttpsAnswer answer) {
  const std::lock_guard lock(pending->mutex);
  if (pending->loop == nullptr) return;
  pending->loop->Post(
      [pending, answer = std::move(answer)]() mutable { Finish(pending, std::move(answer)); });
}

class BackgroundRequest final : public HttpsClient::Request {
 public:
  BackgroundRequest(EventLoop& loop, HttpsClient::Result result)
      : pending_(std::make_shared<PendingPost>(loop, std::move(result))), deadline_(loop, [this] {
          // The timer goes with the request, which the receiver may drop.
          const auto pending = pending_;
          Finish(pending, {0, {}, "the server did not answer in time"});
        }) {}
  ~BackgroundRequest() override {
    pending_->result = nullptr;
    const std::lock_guard lock(pending_->mutex);
    pending_->loop = nullptr;
  }

  void Begin(const HttpsForm& form, const BackgroundHttps::BlockingPost& post) {
    deadline_.Start(form.patience);
    try {
      RunInBackground([pending = pending_, form, post] { Deliver(pending, post(form)); });
    } catch (const std::system_error& error) {
      Deliver(pending_, {0, {}, std::string("there is no thread to be had: ") + error.what()});
    }
  }

 private:
  std::shared_ptr<PendingPost> pending_;
  Timer deadline_;
};

}  // namespace

std::unique_ptr<HttpsClient::Request> BackgroundHttps::Post(const HttpsForm& form, Result result) {
  auto request = std::make_unique<BackgroundRequest>(loop_, std::move(result));
  request->Begin(form, post_);
  return request;
}

}  // namespace quillon
