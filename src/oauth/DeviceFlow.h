// The permission of a user who signs in with any browser, and the refresh token that comes of it
// (RFC 8628).
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "oauth/AccessTokens.h"
#include "ports/EventLoop.h"
#include "ports/HttpsClient.h"

namespace quillon {

// What the user has to do.
struct DevicePrompt {
  std::string address;          // to be opened
  std::string code;             // to be entered there
  std::string completeAddress;  // that needs no code; may be empty
  TickCount goodFor = 0;        // milliseconds
};

// One of the two is set. The failure is a sentence without secrets.
struct DevicePermission {
  std::string refreshToken;
  std::string failure;
};

class DeviceFlow {
 public:
  using Show = std::function<void(const DevicePrompt& prompt)>;
  using Done = std::function<void(const DevicePermission& permission)>;

  // Begins at once. Both are called from the event loop, `done` once and at the end, unless the
  // flow is destroyed before.
  DeviceFlow(EventLoop& loop, HttpsClient& https, const OAuthAccount& account, Show show,
             Done done);

 private:
  void Fail(const std::string& failure);
  void OnCode(const HttpsAnswer& answer);
  void WaitForPoll();
  void Poll();
  void OnToken(const HttpsAnswer& answer);

  EventLoop& loop_;
  HttpsClient& https_;
  OAuthAccount account_;
  Show show_;
  Done done_;
  std::string deviceCode_;
  std::string trouble_;  // what kept the last poll from an answer
  TickCount interval_ = 0;
  TickCount deadline_ = 0;
  std::unique_ptr<HttpsClient::Request> request_;
  Timer next_;
};

}  // namespace quillon
