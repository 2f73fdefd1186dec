#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "LoginWorld.h"
#include "core/Text.h"
#include "sasl/Exchange.h"
#include "support/ScriptedSystem.h"

namespace quillon {
namespace {

using namespace std::string_view_literals;
using testing::LoginWorld;
using testing::ScriptedSystem;

struct SystemWorld : LoginWorld {
  LoginChoice Choose(const std::string& offered, const LoginRules& rules = {}) const {
    return ChooseMechanism(Split(offered, " "), rules, {credentials, connection, crypto, &system});
  }

  ScriptedSystem system;
};

struct SystemTurn {
  std::string_view challenge;
  std::string_view answer;  // "!" with words of a failure, else the response
};

void ExpectSystemStep(std::string_view expected, const SaslStep& step) {
  if (expected.starts_with('!')) {
    EXPECT_NE(std::string::npos, step.failure.find(expected.substr(1))) << step.failure;
    EXPECT_TRUE(step.Failed());
  } else {
    EXPECT_EQ(expected, step.response);
    EXPECT_EQ("", step.failure);
  }
}

TEST(SystemLogin, Dialogues) {
  const std::vector<SystemContext::Step> ntlm = {{"one", false, {}}, {"three ", true, {}}};
  const std::vector<SystemContext::Step> kerberos = {{"request", false, {}}, {"", true, {}}};
  const std::vector<SystemContext::Step> refused = {{"one", false, {}}, {"", false, "No such."}};
  constexpr auto kNone = "signed \1\0\0\0"sv;
  const struct {
    const char* name;
    std::vector<SystemContext::Step> steps;
    std::string_view initial;
    std::vector<SystemTurn> turns;
    std::string_view success;
  } kCases[] = {
      {"NTLM", ntlm, "one", {{"two", "three two"}}, ""},
      {"NTLM", ntlm, "one", {}, "!before"},
      {"NTLM", ntlm, "one", {{"two", "three two"}, {"", "!more than"}}, ""},
      {"NTLM", refused, "one", {{"two", "!No such."}}, "!before"},
      {"NTLM", {{"", false, "No account."}}, "!No account.", {}, "!before"},
      {"GSSAPI", kerberos, "request", {{"reply", "reply"}, {"signed \7\1\0\0"sv, kNone}}, ""},
      {"GSSAPI", {{"all", true, {}}}, "all", {{"signed \1\0\0\0"sv, kNone}}, ""},
      {"GSSAPI", kerberos, "request", {}, "!before"},
      {"GSSAPI", kerberos, "request", {{"reply", "reply"}}, "!before"},
      {"GSSAPI", kerberos, "request", {{"", ""}, {"signed \6\0\0\0"sv, "!insists"}}, "!before"},
      {"GSSAPI", kerberos, "request", {{"", ""}, {"\1\0\0\0"sv, "!malformed"}}, "!before"},
      {"GSSAPI", kerberos, "request", {{"", ""}, {"signed \1"sv, "!malformed"}}, "!before"},
      {"GSSAPI", kerberos, "request", {{"", ""}, {kNone, kNone}, {"", "!more than"}}, "!before"},
      {"GSSAPI", refused, "one", {{"two", "!No such."}, {"three", "!more than"}}, "!before"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    SystemWorld world;
    world.system.steps = test.steps;
    const auto mechanism = world.Choose(test.name).mechanism;
    ASSERT_EQ(test.name, mechanism->Name());
    ExpectSystemStep(test.initial, mechanism->Begin().value());
    for (const auto& turn : test.turns)
      ExpectSystemStep(turn.answer, mechanism->Answer(turn.challenge));
    ExpectSystemStep(test.success, mechanism->Succeeded({}));
  }
}

// [MS-SMTPNTLM]: the command stands alone, and what the server answers is words.
TEST(SystemLogin, NtlmAsLines) {
  SystemWorld world;
  world.system.steps = {{"one", false, {}}, {"three ", true, {}}};
  const auto mechanism = world.Choose("NTLM").mechanism;
  Exchange exchange(*mechanism, kLongestSmtpAuth);
  EXPECT_EQ("AUTH NTLM", exchange.Begin().line);
  EXPECT_NE("", exchange.Succeeded());
  EXPECT_EQ(Base64Word("one"), exchange.Answer("NTLM supported").line);
  const auto last = exchange.Answer(Base64Word("two"));
  EXPECT_EQ(Base64Word("three two"), last.line);
  EXPECT_EQ("****", last.shown);
  EXPECT_EQ("", exchange.Succeeded());
}

TEST(SystemLogin, WhatTheSystemIsGiven) {
  SystemWorld world;
  world.connection.service = "smtp";
  world.Choose("NTLM");
  EXPECT_EQ("ntlm smtp/mail.example.com user pencil ", world.system.begun);
  world.connection.endPoint = "digest";
  world.credentials = {};
  LoginRules rules;
  rules.wanted = {"GSSAPI"};
  world.Choose("GSSAPI", rules);
  EXPECT_EQ("negotiate smtp/mail.example.com   tls-server-end-point:digest", world.system.begun);

  world.system.steps = {{"", true, {}}};
  world.credentials.authorization = "boss";
  const auto acting = world.Choose("GSSAPI", rules).mechanism;
  acting->Begin();
  EXPECT_EQ("signed \1\0\0\0boss"sv, acting->Answer("signed \1\0\0\0"sv).response);
}

TEST(SystemLogin, WhenItIsChosen) {
  constexpr unsigned kClear = 1;
  constexpr unsigned kNoLogin = 2;
  constexpr unsigned kNoPassword = 4;
  constexpr unsigned kUnknown = 8;
  constexpr unsigned kAvoided = 16;
  const struct {
    unsigned facts;
    const char* offered;
    const char* wanted;
    std::string_view expected;  // a mechanism, or the end of the reason
  } kCases[] = {
      {0, "NTLM GSSAPI", "", "GSSAPI"},
      {0, "NTLM LOGIN", "", "LOGIN"},
      {0, "NTLM LOGIN", "NTLM", "NTLM"},
      {kUnknown, "NTLM", "NTLM", "NTLM is not known to this system."},
      {kUnknown, "NTLM GSSAPI", "", "GSSAPI"},
      {kNoLogin, "NTLM", "NTLM", "NTLM"},
      {kNoLogin, "NTLM", "", "NTLM needs a login name, or Authentication."},
      {kNoLogin, "NTLM PLAIN", "PLAIN NTLM", "NTLM"},
      {kNoPassword, "NTLM", "NTLM", "NTLM needs a password."},
      {kClear, "NTLM", "", "NTLM needs an encrypted connection, or Authentication."},
      {kClear | kNoLogin, "NTLM", "NTLM", "NTLM"},
      {kAvoided, "NTLM", "", "The server offers NTLM."},
      {kAvoided, "NTLM", "NTLM", "NTLM"},
  };
  for (const auto& test : kCases) {
    SystemWorld world;
    world.credentials.accessToken.clear();
    world.connection.encrypted = (test.facts & kClear) == 0;
    if ((test.facts & (kNoLogin | kNoPassword)) != 0) world.credentials.password.clear();
    if ((test.facts & kNoLogin) != 0) world.credentials.loginName.clear();
    world.system.knowsNtlm = (test.facts & kUnknown) == 0;
    LoginRules rules;
    rules.avoidSystem = (test.facts & kAvoided) != 0;
    rules.wanted = ReadMechanismNames(test.wanted).value();
    const auto choice = world.Choose(test.offered, rules);
    const std::string found(choice.mechanism ? choice.mechanism->Name() : choice.reason);
    EXPECT_TRUE(found.ends_with(test.expected)) << found << " instead of " << test.expected;
  }
  // A system without such logins says so, and does without in an automatic choice.
  LoginWorld without;
  EXPECT_EQ("The server offers NTLM. NTLM is not known to this system.",
            ChooseMechanism({"NTLM"}, {{"NTLM"}}, without.context).reason);
}

}  // namespace
}  // namespace quillon
