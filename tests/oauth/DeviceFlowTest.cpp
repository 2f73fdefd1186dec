#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "oauth/DeviceFlow.h"
#include "oauth/ScriptedHttps.h"
#include "support/FakeNetwork.h"

namespace quillon::testing {
namespace {

OAuthAccount DeviceAccount() {
  return {"https://login.example.com/token",
          "https://login.example.com/device",
          "id",
          "secret",
          "",
          "mail"};
}

constexpr const char* kCode =
    R"({"device_code":"device-1","user_code":"ABCD\u001b[2J","verification_uri":"https://a/b",)"
    R"("interval":1,"expires_in":60})";

struct Flow {
  FakeNetwork loop;
  ScriptedHttps https{loop};
  std::string shown;
  std::string result;  // "TOKEN|FAILURE"

  void Run() {
    auto flow = std::make_unique<DeviceFlow>(
        loop, https, DeviceAccount(),
        [this](const DevicePrompt& prompt) { shown += prompt.address + "|" + prompt.code; },
        [this](const DevicePermission& permission) {
          result += permission.refreshToken + "|" + permission.failure;
        });
    EXPECT_TRUE(loop.RunUntil([this] { return !result.empty(); }, loop.Now() + 4'000'000));
    flow = nullptr;
    loop.RunPending();
  }
};

TEST(DeviceFlow, AsksUntilTheUserHasEnteredTheCode) {
  Flow flow;
  flow.https.Say(200, kCode);
  flow.https.Say(400, R"({"error":"authorization_pending"})");
  flow.https.Say(400, R"({"error":"slow_down"})");
  flow.https.Say(0, "");
  flow.https.Say(502, "<html>");
  flow.https.Say(200, R"({"access_token":"a","refresh_token":"refresh-1"})");
  flow.Run();
  EXPECT_EQ("https://a/b|ABCD [2J", flow.shown);
  EXPECT_EQ("refresh-1|", flow.result);
  EXPECT_EQ("client_id=id&client_secret=secret&scope=mail", flow.https.forms.at(0).body);
  EXPECT_EQ(
      "grant_type=urn%3Aietf%3Aparams%3Aoauth%3Agrant-type%3Adevice_code&device_code=device-1"
      "&client_id=id&client_secret=secret",
      flow.https.forms.at(1).body);
  std::vector<TickCount> pauses;
  for (std::size_t i = 1; i < flow.https.times.size(); ++i) {
    pauses.push_back(flow.https.times[i] - flow.https.times[i - 1]);
  }
  EXPECT_EQ((std::vector<TickCount>{1000, 1000, 6000, 11'000, 16'000}), pauses);
}

TEST(DeviceFlow, EndsInAReason) {
  const std::string server = "The token server login.example.com ";
  const std::string noCode =
      server + "gave an answer that has no code, or no address to enter it at.";
  const auto code = [](const std::string& address, const std::string& more) {
    return R"({"device_code":"dev-1","user_code":"ABCD",)" + address + more + "}";
  };
  const std::string address = R"("verification_url":"https://a/b")";
  const struct {
    int status;
    std::string code;
    int answerStatus;  // of the polls
    std::string answer;
    std::string failure;
  } cases[] = {
      {0, "", 0, "", server + "could not be asked: nobody is there."},
      {400, R"({"error":"invalid_scope"})", 0, "", server + "refused: invalid_scope."},
      {200, "{}", 0, "", noCode},
      {200, code(R"("verification_uri":"http://a/b")", ""), 0, "", noCode},
      {200, code(R"("verification_uri":"https://a/\u0007")", ""), 0, "", noCode},
      {200, code(address, R"(,"expires_in":0)"), 0, "", "The code was not entered in time."},
      {200, code(address, R"(,"expires_in":1e9,"interval":-5)"), 400,
       R"({"error":"authorization_pending"})", "The code was not entered in time."},
      {200, code(address, R"(,"expires_in":30,"interval":1e9)"), 0, "",
       "The code was not entered in time."},
      {200, code(address, ""), 503, "",
       server + "answered with HTTP status 503 and without a reason."},
      {200, code(address, ""), 400, R"({"error":"expired_token"})",
       "The code was not entered in time."},
      {200, code(address, ""), 400, R"({"error":"access_denied"})",
       "The permission was refused. " + server + "refused: access_denied."},
      {200, code(address, ""), 400,
       R"({"error":"invalid_client","error_description":"secret dev-1"})",
       server + "refused: invalid_client: **** ****."},
      {200, code(address, ""), 200, R"({"access_token":"a"})",
       server +
           "gave an answer that has no refresh token; some want \"offline_access\" in the scope."},
  };
  for (const auto& row : cases) {
    Flow flow;
    flow.https.Say(row.status, row.code);
    for (int i = 0; i < 4000; ++i) flow.https.Say(row.answerStatus, row.answer);
    flow.Run();
    EXPECT_EQ("|" + row.failure, flow.result);
  }
}

}  // namespace
}  // namespace quillon::testing
