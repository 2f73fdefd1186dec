// A server's half of TLS in front of a peer of the fake network.
#pragma once

#include <string>
#include <string_view>

#include "support/FakeNetwork.h"
#include "support/posix/TlsServer.h"

namespace quillon::testing {

class TlsFilter final : public PeerFilter {
 public:
  explicit TlsFilter(const IssuedCertificate& own) : server_(own, {}) {}

  bool HoldsBack() const override { return !server_.Secured(); }
  std::string Outgoing(std::string_view text) override {
    server_.Say(text);
    return server_.TakeOutput();
  }
  std::string Incoming(std::string_view bytes, std::string& answer) override {
    server_.Take(bytes);
    answer += server_.TakeOutput();
    return server_.TakeText();
  }

 private:
  TlsServer server_;
};

}  // namespace quillon::testing
