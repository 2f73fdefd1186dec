#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "oauth/ProviderTokens.h"
#include "oauth/ScriptedHttps.h"
#include "support/FakeNetwork.h"

namespace quillon::testing {
namespace {

OAuthAccount TokenAccount() {
  return {
      "https://login.example.com/token", "", "id", "a secret", "refresh-1", "mail offline_access"};
}

class ProviderTokensTest : public ::testing::Test {
 protected:
  // What comes of a request, whole: "TOKEN|FAILURE".
  std::string Obtain(const OAuthAccount& account) {
    std::string said;
    const auto request = tokens.Obtain(account, Into(said));
    EXPECT_EQ("", said) << "before the loop had its turn";
    Wait([&] { return !said.empty(); });
    return said;
  }
  static AccessTokens::Result Into(std::string& said) {
    return [&said](const AccessToken& token) { said += token.token + "|" + token.failure; };
  }
  template <typename Condition>
  void Wait(const Condition& condition) {
    EXPECT_TRUE(loop.RunUntil(condition, loop.Now() + 10'000'000));
  }
  void Pass(TickCount time) {
    Timer timer(loop, [] {});
    timer.Start(time);
    Wait([&] { return !timer.Running(); });
  }
  void Give(const std::string& token, const std::string& more = "") {
    https.Say(200, R"({"access_token":")" + token + R"(","expires_in":3600)" + more + "}");
  }

  const OAuthAccount common = TokenAccount();
  FakeNetwork loop;
  ScriptedHttps https{loop};
  std::vector<std::string> stored;
  ProviderTokens tokens{loop, https, [this](const OAuthAccount& account, const std::string& token) {
                          stored.push_back(account.refreshToken + " -> " + token);
                        }};
};

TEST_F(ProviderTokensTest, ATokenIsKeptUntilShortlyBeforeItsEndOrUntilItIsRefused) {
  Give("one");
  EXPECT_EQ("one|", Obtain(common));
  EXPECT_EQ("https://login.example.com/token", https.forms.at(0).url);
  EXPECT_EQ(
      "grant_type=refresh_token&refresh_token=refresh-1&client_id=id&client_secret=a+secret"
      "&scope=mail+offline_access",
      https.forms.at(0).body);
  Pass(3'500'000);
  EXPECT_EQ("one|", Obtain(common));
  Pass(41'000);
  Give("two");
  EXPECT_EQ("two|", Obtain(common));
  tokens.Forget(common);
  Give("three");
  EXPECT_EQ("three|", Obtain(common));
  auto other = common;
  other.scope = "other";
  Give("another");
  EXPECT_EQ("another|", Obtain(other));
  EXPECT_EQ("three|", Obtain(common));
}

TEST_F(ProviderTokensTest, FailuresAreToldAndTheNextRequestTriesAnew) {
  https.Say(0, "");
  EXPECT_EQ("|The token server login.example.com could not be asked: nobody is there.",
            Obtain(common));
  https.Say(400, R"({"error":"invalid_grant","error_description":"Not refresh-1 again."})");
  EXPECT_EQ(
      "|The token server login.example.com refused: invalid_grant: Not **** again."
      " quillon.exe /Authorize asks the provider for its permission anew.",
      Obtain(common));
  // Good for no time at all: used once, kept never.
  https.Say(200, R"({"access_token":"brief","expires_in":0})");
  EXPECT_EQ("brief|", Obtain(common));
  Give("good");
  EXPECT_EQ("good|", Obtain(common));
  EXPECT_EQ(4U, https.forms.size());
}

TEST_F(ProviderTokensTest, WhatCannotBeAskedIsNotAsked) {
  for (const auto& url : {"", "http://login.example.com/", "https://", "https:///x",
                          "https://login.example.com/\r\nx", "https://a b/"}) {
    auto account = common;
    account.tokenUrl = url;
    EXPECT_EQ("|TokenURL is no address that begins with https://.", Obtain(account)) << url;
  }
  auto account = common;
  account.clientId.clear();
  EXPECT_EQ("|There is no ClientId.", Obtain(account));
  account = common;
  account.refreshToken.clear();
  EXPECT_NE(std::string::npos, Obtain(account).find("/Authorize"));
  EXPECT_TRUE(https.forms.empty());
}

TEST_F(ProviderTokensTest, ThoseWhoWaitAtTheSameTimeShareARequest) {
  https.Say(200, R"({"access_token":"one","expires_in":3600})", 5000);
  std::string first;
  std::string second;
  std::string third;
  auto given = tokens.Obtain(common, Into(first));
  const auto kept = tokens.Obtain(common, Into(second));
  std::unique_ptr<AccessTokens::Request> last;
  last = tokens.Obtain(common, [&](const AccessToken& token) {
    third = token.token;
    last = nullptr;
  });
  given = nullptr;
  Wait([&] { return !third.empty(); });
  EXPECT_EQ("", first);
  EXPECT_EQ("one|", second);
  EXPECT_EQ(nullptr, last);
}

TEST_F(ProviderTokensTest, AReplacedRefreshTokenIsStoredAndServesEverybodyWhoKnewAnEarlierOne) {
  https.Say(200, R"({"access_token":"one","refresh_token":"refresh-2","expires_in":0})", 5000);
  std::string nobody;
  tokens.Obtain(common, Into(nobody));  // and given up at once
  Wait([&] { return !stored.empty(); });
  EXPECT_EQ("", nobody);
  Give("two", R"(,"refresh_token":"refresh-3")");
  EXPECT_EQ("two|", Obtain(common));
  EXPECT_NE(std::string::npos, https.forms.at(1).body.find("refresh-2"));
  auto newer = common;
  newer.refreshToken = "refresh-3";
  EXPECT_EQ("two|", Obtain(newer));
  EXPECT_EQ((std::vector<std::string>{"refresh-1 -> refresh-2", "refresh-2 -> refresh-3"}), stored);
  // The administrator has asked for one of his own.
  newer.refreshToken = "refresh-9";
  Give("nine", R"(,"refresh_token":"refresh-9")");
  EXPECT_EQ("nine|", Obtain(newer));
  EXPECT_EQ(2U, stored.size());
}

}  // namespace
}  // namespace quillon::testing
