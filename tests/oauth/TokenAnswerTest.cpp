#include <gtest/gtest.h>
#include <string>

#include "oauth/TokenAnswer.h"

namespace quillon {
namespace {

constexpr const char* kUrl = "https://login.example.com/token?key=K";

TokenAnswer Read(int status, const std::string& body) {
  return ReadTokenAnswer({status, body, "nobody is there"}, kUrl, {"client secret", "refresh-1"});
}

std::string Nested(std::size_t depth) {
  return R"({"access_token":"t","more":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

TEST(TokenAnswer, GoodOnesOfAllKinds) {
  const struct {
    std::string body;
    TickCount lifetime;
    const char* refreshToken;
  } cases[] = {
      {R"({"access_token":"t","token_type":"Bearer","expires_in":3600})", 3'600'000, ""},
      {R"({"access_token":"t","token_type":"bearer","expires_in":"3599"})", 3'599'000, ""},
      {R"({"access_token":"t","expires_in":3599.0,"refresh_token":"r"})", 3'599'000, "r"},
      {R"({"access_token":"t"})", 300'000, ""},
      {R"({"access_token":"t","expires_in":true})", 300'000, ""},
      {R"({"access_token":"t","expires_in":"soon"})", 300'000, ""},
      {R"({"access_token":"t","expires_in":"nan"})", 300'000, ""},
      {R"({"access_token":"t","expires_in":-7})", 0, ""},
      {R"({"access_token":"t","expires_in":1e300})", 86'400'000, ""},
      {R"({"access_token":"t","expires_in":99999999999999999999999})", 86'400'000, ""},
      {R"({"access_token":"t","access_token":"u","expires_in":60})", 60'000, ""},
      {R"({"x":{"access_token":"u","error":"e"},"access_token":"t","expires_in":60})", 60'000, ""},
      {Nested(10), 300'000, ""},
  };
  for (const auto& row : cases) {
    const auto read = Read(200, row.body);
    EXPECT_EQ("", read.failure) << row.body;
    EXPECT_EQ("t", read.accessToken) << row.body;
    EXPECT_EQ(row.lifetime, read.lifetime) << row.body;
    EXPECT_EQ(row.refreshToken, read.refreshToken) << row.body;
  }
}

TEST(TokenAnswer, FailuresHaveTheProvidersWordsAndNoSecrets) {
  const std::string server = "The token server login.example.com ";
  const std::string wrong = server + "gave an answer that ";
  const struct {
    int status;
    std::string body;
    std::string failure;
  } cases[] = {
      {0, "", server + "could not be asked: nobody is there."},
      {400, R"({"error":"invalid_grant"})", server + "refused: invalid_grant."},
      {400, R"({"error":"invalid_grant","error_description":"Gone.\r\n\tFor ever.\r\n"})",
       server + "refused: invalid_grant: Gone. For ever."},
      {401, R"({"error":"x","error_description":"refresh-1 of client+secret, client secret"})",
       server + "refused: x: **** of ****, ****."},
      // Also one that says that all is well.
      {200, R"({"error":"x","access_token":"t"})", server + "refused: x."},
      {503, "<html>", server + "answered with HTTP status 503 and without a reason."},
      {302, R"({"access_token":"t"})",
       server + "answered with HTTP status 302 and without a reason."},
      {200, "<html>", wrong + "is not readable."},
      {200, "", wrong + "is not readable."},
      {200, R"(["access_token"])", wrong + "is not readable."},
      {200, R"("access_token")", wrong + "is not readable."},
      {200, R"({"access_token":"t"} and more)", wrong + "is not readable."},
      {200, "{\"access_token\":\"\xff\"}", wrong + "is not readable."},
      {200, Nested(100'000), wrong + "is not readable."},
      {200, std::string(500'000, '['), wrong + "is not readable."},
      {200, "{}", wrong + "has no access token."},
      {200, R"({"access_token":7})", wrong + "has no access token."},
      // A blank or a control character would become part of the login's own language.
      {200, R"({"access_token":"a\u0001auth=b"})", wrong + "has no access token."},
      {200, R"({"access_token":"a b"})", wrong + "has no access token."},
      {200, R"({"access_token":")" + std::string(40'000, 'a') + R"("})",
       wrong + "has no access token."},
      {200, R"({"access_token":"t","token_type":"mac"})",
       wrong + "has a token of an unknown kind."},
      {200, R"({"access_token":"t","refresh_token":"r\n"})",
       wrong + "has a refresh token that is none."},
  };
  for (const auto& row : cases) {
    const auto read = Read(row.status, row.body);
    EXPECT_EQ(row.failure, read.failure) << row.body.substr(0, 80);
    EXPECT_EQ("", read.accessToken);
  }
  const auto endless =
      Read(400, R"({"error":"e","error_description":")" + std::string(9000, 'x') + R"("})");
  EXPECT_LT(endless.failure.size(), 600U);
}

}  // namespace
}  // namespace quillon
