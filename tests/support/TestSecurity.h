// The system's own TLS for tests, with one root that is trusted beside it and checks without a
// thread, since a test's loop has a time of its own; and a system that says the same in each login.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "internet/MailSession.h"
#include "oauth/NoAccessTokens.h"
#include "platform/Platform.h"
#include "support/ScriptedSystem.h"

namespace quillon::testing {

class TestTls final : public TlsLibrary {
 public:
  std::unique_ptr<TlsSession> MakeSession(const TlsSettings& settings) override {
    return System().MakeSession(settings);
  }
  ChainVerdict CheckChain(const std::vector<std::string>& chain,
                          const CertificateTrust& trust) override {
    auto mine = trust;
    mine.onlyRoot = root;
    return System().CheckChain(chain, mine);
  }

  std::string root;  // in DER; empty: those of the system

 private:
  // Reading the system's roots takes a while.
  static TlsLibrary& System() {
    static const auto library = MakeTlsLibrary();
    return *library;
  }
};

struct TestSecurity {
  explicit TestSecurity(EventLoop& loop) : tokens(loop) {}

  SecurityPorts Ports() {
    return {tls, *crypto, tokens, [](const std::function<void()>& work) { work(); }, &system};
  }

  TestTls tls;
  std::unique_ptr<Crypto> crypto = MakeCrypto();
  NoAccessTokens tokens;
  ScriptedSystem system{{{"one", false, {}}, {"three ", true, {}}}};
};

}  // namespace quillon::testing
