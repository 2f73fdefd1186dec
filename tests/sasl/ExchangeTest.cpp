#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "LoginWorld.h"
#include "sasl/Exchange.h"

namespace quillon {
namespace {

using testing::LoginWorld;

// Says what it is told to, over and over.
class Parrot final : public Mechanism {
 public:
  explicit Parrot(std::string words) : words_(std::move(words)) {}

  std::string_view Name() const override { return "PARROT"; }
  std::optional<SaslStep> Begin() override { return Respond(words_); }
  SaslStep Answer(std::string_view) override {
    if (words_ == "md5") throw CryptoError("No MD5 here.");
    return Respond(words_);
  }
  SaslStep Succeeded(std::string_view) override { return {}; }

 private:
  std::string words_;
};

struct ExchangeTurn {
  std::string_view challenge;
  std::string_view answer;
};

// "!" with words of a failure behind "*", else the line.
void ExpectLine(std::string_view expected, const ExchangeLine& line) {
  if (expected.starts_with('!')) {
    EXPECT_EQ("*", line.line);
    EXPECT_NE(std::string::npos, line.failure.find(expected.substr(1))) << line.failure;
  } else {
    EXPECT_EQ(expected, line.line);
    EXPECT_EQ("", line.failure);
  }
}

TEST(Exchange, Lines) {
  constexpr std::string_view kScramFirst =
      "cj1yT3ByTkdmd0ViZVJXZ2JORWtxTyVodllEcFdVYTJSYVRDQWZ1eEZJbGopaE5sRiRrMCxzPVcyMlphSjBTTlk3c29F"
      "c1VFamI2Z1E9PSxpPTQwOTY=";
  constexpr std::string_view kScramProof =
      "Yz1iaXdzLHI9ck9wck5HZndFYmVSV2diTkVrcU8laHZZRHBXVWEyUmFUQ0FmdXhGSWxqKWhObEYkazAscD1kSHpiWmFw"
      "V0lrNGpVaE4rVXRlOXl0YWc5empmTUhnc3FtbWl6N0FuZFZRPQ==";
  const struct {
    std::string_view name;
    std::size_t longest;
    std::string_view command;
    std::vector<ExchangeTurn> lines;
    std::string_view success;
  } kCases[] = {
      {"PLAIN", kLongestSmtpAuth, "AUTH PLAIN AHVzZXIAcGVuY2ls", {}, ""},
      {"PLAIN", 0, "AUTH PLAIN", {{"", "AHVzZXIAcGVuY2ls"}}, ""},
      {"PLAIN", 0, "AUTH PLAIN", {{"go ahead", "AHVzZXIAcGVuY2ls"}}, ""},
      {"PLAIN", 0, "AUTH PLAIN", {}, "before it knows"},
      {"PLAIN", kLongestPopAuth, "AUTH PLAIN AHVzZXIAcGVuY2ls", {{"", "!more than"}}, "more than"},
      {"LOGIN",
       kLongestPopAuth,
       "AUTH LOGIN",
       {{"VXNlcm5hbWU6 ", "dXNlcg=="}, {"UGFzc3dvcmQ6", "cGVuY2ls"}},
       ""},
      {"LOGIN", kLongestSmtpAuth, "AUTH LOGIN", {{"Username:", "!not base64"}}, "not base64"},
      {"SCRAM-SHA-256",
       kLongestSmtpAuth,
       "AUTH SCRAM-SHA-256 biwsbj11c2VyLHI9ck9wck5HZndFYmVSV2diTkVrcU8=",
       {{kScramFirst, kScramProof},
        {"dj02cnJpVFJCaTIzV3BSUi93dHVwK21NaFVaVW4vZEI1bkxUSlJzamw5NUc0PQ==", ""}},
       ""},
      {"SCRAM-SHA-256",
       kLongestSmtpAuth,
       "AUTH SCRAM-SHA-256 biwsbj11c2VyLHI9ck9wck5HZndFYmVSV2diTkVrcU8=",
       {{kScramFirst, kScramProof}},
       "not shown"},
      {"XOAUTH2",
       kLongestSmtpAuth,
       "AUTH XOAUTH2 dXNlcj11c2VyAWF1dGg9QmVhcmVyIHRvay5lbn4rLz0BAQ==",
       {{"e30=", ""}},
       "after it has refused"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.command);
    LoginWorld world;
    const auto mechanism = world.Make(test.name);
    Exchange exchange(*mechanism, test.longest);
    ExpectLine(test.command, exchange.Begin());
    for (const auto& line : test.lines) ExpectLine(line.answer, exchange.Answer(line.challenge));
    const auto failure = exchange.Succeeded();
    EXPECT_EQ(test.success.empty(), failure.empty());
    EXPECT_NE(std::string::npos, failure.find(test.success)) << failure;
  }
}

// RFC 4954, 4: a command that were too long with its line end goes without the initial response.
TEST(Exchange, LongTokensWaitForTheServer) {
  const std::string token(372, 't');
  const std::string word = Base64Word(token);
  const std::size_t longest = std::string_view("AUTH PARROT ").size() + word.size() + 2;
  Parrot parrot(token);
  ExpectLine("AUTH PARROT " + word, Exchange(parrot, longest).Begin());
  Exchange exchange(parrot, longest - 1);
  ExpectLine("AUTH PARROT", exchange.Begin());
  ExpectLine(word, exchange.Answer(""));

  Parrot silent("");
  ExpectLine("AUTH PARROT =", Exchange(silent, kLongestPopAuth).Begin());
}

TEST(Exchange, ShowsNoSecrets) {
  LoginWorld world;
  for (const auto* const name : {"PLAIN", "LOGIN", "XOAUTH2"}) {
    const auto mechanism = world.Make(name);
    Exchange exchange(*mechanism, kLongestSmtpAuth);
    const std::string command = std::string("AUTH ") + name;
    EXPECT_EQ(mechanism->Name() == "LOGIN" ? command : command + " ****", exchange.Begin().shown);
  }
  const auto login = world.Make("LOGIN");
  Exchange exchange(*login, kLongestSmtpAuth);
  exchange.Begin();
  for (const auto* const shown : {"****", "****", "*", ""})
    EXPECT_EQ(shown, exchange.Answer("").shown);
}

TEST(Exchange, EndsServersThatDoNot) {
  Parrot parrot("words");
  Exchange endless(parrot, kLongestSmtpAuth);
  endless.Begin();
  for (int i = 0; i < Exchange::kMostChallenges; ++i) ExpectLine("d29yZHM=", endless.Answer(""));
  ExpectLine("!does not come to an end", endless.Answer(""));
  EXPECT_FALSE(endless.Answer("").line);  // nothing behind "*"
  EXPECT_NE("", endless.Succeeded());
  EXPECT_NE("", endless.Reason());

  Exchange flooded(parrot, kLongestSmtpAuth);
  flooded.Begin();
  ExpectLine("d29yZHM=", flooded.Answer(std::string(Exchange::kLongestChallenge, 'A')));
  ExpectLine("!too long", flooded.Answer(std::string(1 << 20, 'A')));
}

// What cannot be said is not begun, and a system that refuses a digest is no crash.
TEST(Exchange, FailuresOfTheClient) {
  LoginWorld world;
  world.credentials.accessToken = "to ken";
  const auto mechanism = world.Make("XOAUTH2");
  Exchange unsayable(*mechanism, kLongestSmtpAuth);
  const auto line = unsayable.Begin();
  EXPECT_FALSE(line.line);
  EXPECT_NE("", line.failure);
  EXPECT_EQ(line.failure, unsayable.Reason());

  Parrot parrot("md5");
  Exchange exchange(parrot, kLongestSmtpAuth);
  exchange.Begin();
  ExpectLine("!No MD5 here.", exchange.Answer(""));
}

}  // namespace
}  // namespace quillon
