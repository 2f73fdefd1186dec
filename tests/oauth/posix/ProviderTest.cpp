// Tokens from a real server over HTTPS.
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "core/BackgroundThread.h"
#include "oauth/ProviderTokens.h"
#include "platform/BackgroundHttps.h"
#include "platform/Platform.h"
#include "platform/posix/CurlHttps.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

constexpr const char* kRules =
    R"([{"path":"/refuse","status":400,"body":{"error":"invalid_client"}},)"
    R"({"path":"/redirect","status":302,"location":"/token","text":"x"},)"
    R"({"path":"/big","size":1200000},{"path":"/hang-up","hang_up":true},)"
    R"({"path":"/slow","delay":2,"keep":true},{"path":"/drip","size":100,"drip":0.1},)"
    R"({"path":"/rotate","rotate":"refresh-2"}])";

// tests/e2e/token_provider.py for as long as it lives.
class Provider {
 public:
  Provider() {
    const auto fifo = folder_.Path("port");
    ::mkfifo(fifo.c_str(), 0600);
    const auto command = std::string("exec python3 -W ignore '") + QUILLON_TESTS_DIR +
                         "/e2e/token_provider.py' '" + Root() + "' '" + kRules + "' > '" + fifo +
                         "'";
    process_ = ::popen(command.c_str(), "w");  // NOLINT(cert-env33-c): nothing is a stranger's
    std::ifstream(fifo) >> port_;
  }
  ~Provider() { ::pclose(process_); }
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;

  std::string Root() const { return folder_.Path("root.pem"); }
  std::string Url(const std::string& path) const {
    return "https://localhost:" + std::to_string(port_) + path;
  }

 private:
  TempFolder folder_;
  FILE* process_;
  int port_ = 0;
};

// One for all tests of a process.
const Provider& TheProvider() {
  static const Provider provider;
  return provider;
}

class RealProviderTest : public ::testing::Test {
 protected:
  ~RealProviderTest() override { JoinBackgroundThreads(); }

  std::unique_ptr<BackgroundHttps> Client(const std::string& roots, TickCount patience) {
    return std::make_unique<BackgroundHttps>(*loop, [roots, patience](const HttpsForm& form) {
      auto hurried = form;
      hurried.patience = patience;
      return PostWithCurl(hurried, roots);
    });
  }
  std::string Obtain(HttpsClient& https, const std::string& path) {
    ProviderTokens tokens(
        *loop, https, [this](const OAuthAccount&, const std::string& token) { replaced = token; });
    std::string said;
    const auto request =
        tokens.Obtain({TheProvider().Url(path), "", "id", "", "refresh-1", ""},
                      [&said](const AccessToken& token) { said = token.token + token.failure; });
    EXPECT_TRUE(loop->RunUntil([&] { return !said.empty(); }, loop->Now() + 60'000));
    return said;
  }

  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  std::string replaced;
};

TEST_F(RealProviderTest, GivesTokensOrAReason) {
  const auto https = Client(TheProvider().Root(), 30'000);
  EXPECT_EQ("access-", Obtain(*https, "/token").substr(0, 7));
  const struct {
    const char* path;
    const char* failure;
  } cases[] = {
      {"/refuse", " refused: invalid_client."},
      {"/redirect", " answered with HTTP status 302 and without a reason."},
      {"/big", " could not be asked: the server's answer is too long."},
  };
  for (const auto& row : cases) {
    const auto said = Obtain(*https, row.path);
    EXPECT_TRUE(said.ends_with(row.failure)) << said;
  }
  const auto cut = Obtain(*https, "/hang-up");
  EXPECT_NE(std::string::npos, cut.find(" could not be asked: ")) << cut;
  EXPECT_EQ("access-", Obtain(*https, "/rotate").substr(0, 7));
  EXPECT_EQ("refresh-2", replaced);
  EXPECT_NE(std::string::npos, Obtain(*https, "/token").find("invalid_grant"));
}

TEST_F(RealProviderTest, PatienceEnds) {
  const auto https = Client(TheProvider().Root(), 500);
  for (const auto* const path : {"/slow", "/drip"}) {
    const auto said = Obtain(*https, path);
    EXPECT_TRUE(said.ends_with(": the server did not answer in time.")) << said;
  }
}

TEST_F(RealProviderTest, AStrangersCertificateIsRefused) {
  const auto https = Client("", 30'000);
  const auto said = Obtain(*https, "/token");
  EXPECT_TRUE(said.ends_with(": the server's certificate was refused.")) << said;
}

TEST(BackgroundHttps, ThePatienceOfTheLoopEndsWhereThatOfTheSystemDoesNot) {
  const auto loop = MakeNetworkLoop();
  BackgroundHttps https(*loop, [](HttpsForm form) {
    form.patience = 30'000;
    return PostWithCurl(form, TheProvider().Root());
  });
  std::vector<std::string> said;
  const HttpsForm form{TheProvider().Url("/slow"), "", 200};
  const auto note = [&said](const HttpsAnswer& answer) { said.push_back(answer.failure); };
  const auto request = https.Post(form, note);
  https.Post(form, note);  // and given up at once
  EXPECT_TRUE(loop->RunUntil([&] { return !said.empty(); }, loop->Now() + 60'000));
  EXPECT_EQ((std::vector<std::string>{"the server did not answer in time"}), said);
  JoinBackgroundThreads();
}

}  // namespace
}  // namespace quillon::testing
