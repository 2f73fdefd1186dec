// An HTTPS client whose answers a test has written, each after its time on the loop's clock.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ports/HttpsClient.h"

namespace quillon::testing {

class ScriptedHttps final : public HttpsClient {
 public:
  struct Step {
    HttpsAnswer answer;
    TickCount delay = 0;
  };

  explicit ScriptedHttps(EventLoop& loop) : loop_(loop) {}

  void Say(int status, const std::string& body, TickCount delay = 0) {
    steps.push_back({{status, body, status == 0 ? "nobody is there" : ""}, delay});
  }

  std::unique_ptr<Request> Post(const HttpsForm& form, Result result) override {
    forms.push_back(form);
    times.push_back(loop_.Now());
    auto step = std::move(steps.at(0));
    steps.pop_front();
    return std::make_unique<Answering>(loop_, std::move(step), std::move(result));
  }

  std::deque<Step> steps;
  std::vector<HttpsForm> forms;
  std::vector<TickCount> times;

 private:
  struct Answering final : Request {
    Answering(EventLoop& loop, Step step, Result result)
        : timer(loop,
                [result = std::move(result), answer = std::move(step.answer)] { result(answer); }) {
      timer.Start(step.delay);
    }
    Timer timer;
  };

  EventLoop& loop_;
};

}  // namespace quillon::testing
