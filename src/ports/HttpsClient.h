// Forms posted over HTTPS, which is all that servers of access tokens ask for. The system checks
// the server's certificate; nothing is ever sent unencrypted, and no redirection is followed.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "ports/EventLoop.h"

namespace quillon {

// Longer answers are failures.
inline constexpr std::size_t kLargestHttpsBody = std::size_t{1} << 20;

struct HttpsForm {
  std::string url;
  std::string body;             // application/x-www-form-urlencoded
  TickCount patience = 30'000;  // from the look-up of the name to the last byte of the answer
};

struct HttpsAnswer {
  int status = 0;  // HTTP's; 0: there is no answer
  std::string body;
  std::string failure;  // why there is none, as "the server's name is not known"
};

class HttpsClient {
 public:
  // Destroying it gives the request up: the result will not come.
  class Request {
   public:
    virtual ~Request() = default;
  };
  using Result = std::function<void(HttpsAnswer answer)>;

  virtual ~HttpsClient() = default;

  // The result comes from the event loop, once.
  virtual std::unique_ptr<Request> Post(const HttpsForm& form, Result result) = 0;
};

}  // namespace quillon
