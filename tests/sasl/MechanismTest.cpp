#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "LoginWorld.h"
#include "sasl/Apop.h"

namespace quillon {
namespace {

using namespace std::string_view_literals;
using testing::LoginWorld;

// What the server says, and what it is answered: "!" with words of a failure, else the response.
struct MechanismTurn {
  std::string_view challenge;
  std::string_view answer;
};

void ExpectStep(std::string_view expected, const SaslStep& step) {
  if (expected.starts_with('!')) {
    EXPECT_NE(std::string::npos, step.failure.find(expected.substr(1))) << step.failure;
    EXPECT_TRUE(step.Failed());
  } else {
    EXPECT_EQ(expected, step.response);
    EXPECT_EQ("", step.failure);
  }
}

// RFC 2195, 4616, 7628 and 1939; and servers that go on, or say success before it can be.
TEST(Mechanism, Dialogues) {
  constexpr auto kServerFirst = "-"sv;
  constexpr auto kChallenge = "<1896.697170952@postoffice.reston.mci.net>"sv;
  constexpr auto kXOAuth2 = "user=user\1auth=Bearer tok.en~+/=\1\1"sv;
  constexpr auto kOAuthBearer =
      "n,a=user,\1host=mail.example.com\1port=587\1auth=Bearer tok.en~+/=\1\1"sv;
  const struct {
    std::string_view name;
    std::string_view initial;
    std::vector<MechanismTurn> turns;
    std::string_view success;
  } kCases[] = {
      {"PLAIN", "\0user\0pencil"sv, {}, ""},
      {"PLAIN", "\0user\0pencil"sv, {{"again", "!more than"}}, ""},
      {"LOGIN", kServerFirst, {{"Username:", "user"}, {"Password:", "pencil"}}, ""},
      {"LOGIN", kServerFirst, {{"", "user"}, {"?", "pencil"}, {"", "!more than"}}, "!before"},
      {"LOGIN", kServerFirst, {{"Username:", "user"}}, "!before"},
      {"CRAM-MD5", kServerFirst, {{kChallenge, "user 266f82bb2d1ace6729d2c573e4e004c6"}}, ""},
      {"CRAM-MD5", kServerFirst, {{"", "!empty"}}, "!before"},
      {"CRAM-MD5", kServerFirst, {}, "!before"},
      {"XOAUTH2", kXOAuth2, {}, ""},
      {"XOAUTH2", kXOAuth2, {{"{}", ""}, {"{}", "!goes on"}}, "!after it has refused"},
      {"OAUTHBEARER", kOAuthBearer, {}, ""},
      {"OAUTHBEARER", kOAuthBearer, {{"{}", "\1"}, {"", "!goes on"}}, "!after it has refused"},
      {"SCRAM-SHA-256", "n,,n=user,r=rOprNGfwEbeRWgbNEkqO", {}, "!not shown"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    LoginWorld world;
    const auto mechanism = world.Make(test.name);
    ASSERT_EQ(test.name, mechanism->Name());
    const auto first = mechanism->Begin();
    ASSERT_EQ(test.initial != kServerFirst, first.has_value());
    if (first) ExpectStep(test.initial, *first);
    for (const auto& turn : test.turns) ExpectStep(turn.answer, mechanism->Answer(turn.challenge));
    ExpectStep(test.success, mechanism->Succeeded({}));
  }
}

TEST(Mechanism, CramMd5AsPublished) {
  LoginWorld world;
  world.credentials.loginName = "tim";
  world.credentials.password = "tanstaaftanstaaf";
  EXPECT_EQ("tim b913a602c7eda7a495b4e6e7334d3890",
            world.Make("CRAM-MD5")->Answer("<1896.697170952@postoffice.reston.mci.net>").response);
}

// The reason of a provider is for the user, its control characters and the token are not.
TEST(Mechanism, KeepsTheReasonOfARefusedToken) {
  LoginWorld world;
  const auto mechanism = world.Make("XOAUTH2");
  mechanism->Begin();
  mechanism->Answer("{\"status\":\"400\",\r\n\"token\":\"tok.en~+/=\"}");
  EXPECT_EQ("{\"status\":\"400\", \"token\":\"****\"}", mechanism->ServerReason());
}

TEST(Mechanism, WritesNamesAndRefusesWhatCannotBeSaid) {
  const struct {
    std::string_view name;
    Credentials credentials;
    std::string_view initial;
  } kCases[] = {
      {"PLAIN", {"boss", "us,er", "p\xC3\xA4ss", ""}, "boss\0us,er\0p\xC3\xA4ss"sv},
      {"PLAIN", {"", "user", std::string("a\0b", 3), ""}, "!NUL"},
      {"OAUTHBEARER",
       {"", "u=,r", "", "token"},
       "n,a=u=3D=2Cr,\1host=mail.example.com\1port=587\1auth=Bearer token\1\1"},
      {"OAUTHBEARER", {"", "user", "", "token\r\n"}, "!access token"},
      {"XOAUTH2", {"", "user\1auth=Bearer other", "", "token"}, "!control"},
      {"SCRAM-SHA-256", {"bo=ss", "u,r", "p", ""}, "n,a=bo=3Dss,n=u=2Cr,r=rOprNGfwEbeRWgbNEkqO"},
      {"SCRAM-SHA-256", {"", "user", "a\tb", ""}, "!control"},
      {"SCRAM-SHA-256", {"", "us\xE2\x80\xA8r", "p", ""}, "!control"},
      {"SCRAM-SHA-256", {"", "us\xFFr", "p", ""}, "!control"},
  };
  for (const auto& test : kCases) {
    LoginWorld world;
    world.credentials = test.credentials;
    ExpectStep(test.initial, world.Make(test.name)->Begin().value());
  }
}

TEST(Apop, DigestAndTimestamp) {
  LoginWorld world;
  EXPECT_EQ("c4c9334bac560ecc979e58001b3e22fb",
            ApopDigest(world.crypto, "<1896.697170952@dbc.mtview.ca.us>", "tanstaaf"));
  const struct {
    std::string_view greeting;
    std::string_view timestamp;
  } kCases[] = {
      {"+OK POP3 server ready <1896.697170952@dbc.mtview.ca.us>",
       "<1896.697170952@dbc.mtview.ca.us>"},
      {"+OK <a@b> <c@d>", "<a@b>"},
      {"+OK ready", ""},
      {"+OK <welcome>", ""},
      {"+OK <a@b", ""},
      {"+OK <@b>", ""},
      {"+OK <a@>", ""},
      {"+OK <a@b@c>", ""},
      {"+OK <a\x80@b>", ""},
      {"+OK <a @b>", ""},
      {"+OK <a<b@c>", ""},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.timestamp, ApopTimestamp(test.greeting));
}

}  // namespace
}  // namespace quillon
