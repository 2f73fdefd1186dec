#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "LoginWorld.h"
#include "core/Text.h"

namespace quillon {
namespace {

using testing::LoginWorld;

constexpr unsigned kClear = 1;      // the connection is not encrypted
constexpr unsigned kPlainText = 2;  // and secrets may go over it
constexpr unsigned kNoToken = 4;
constexpr unsigned kNoPassword = 8;
constexpr unsigned kBinding = 16;
constexpr unsigned kNoName = 32;

TEST(Choice, TakesTheStrongestOrWhatIsWanted) {
  const std::string all =
      "LOGIN PLAIN cram-md5 SCRAM-SHA-1 SCRAM-SHA-256 SCRAM-SHA-1-PLUS SCRAM-SHA-256-PLUS "
      "XOAUTH2 OAUTHBEARER GSSAPI";
  const std::string passwords = "LOGIN PLAIN";
  const struct {
    unsigned facts;
    std::string offered;
    std::string wanted;
    std::string_view expected;  // a mechanism, or the reason
  } kCases[] = {
      {0, all, "", "OAUTHBEARER"},
      {0, "XOAUTH2 PLAIN", "", "XOAUTH2"},
      {kNoToken, all, "", "SCRAM-SHA-256"},
      {kNoToken | kBinding, all, "", "SCRAM-SHA-256-PLUS"},
      {kNoToken | kBinding, "SCRAM-SHA-256 SCRAM-SHA-1-PLUS", "", "SCRAM-SHA-1-PLUS"},
      {kNoToken, "LOGIN PLAIN CRAM-MD5", "", "CRAM-MD5"},
      {0, passwords, "", "PLAIN"},
      {kClear, all, "", "SCRAM-SHA-256"},
      {kClear | kPlainText, all, "", "OAUTHBEARER"},
      {kClear | kPlainText | kNoToken, passwords, "", "PLAIN"},
      {0, all, "login PLAIN", "LOGIN"},
      {0, "PLAIN", "SCRAM-SHA-256 PLAIN", "PLAIN"},
      {kClear, passwords + " CRAM-MD5", "PLAIN CRAM-MD5", "CRAM-MD5"},

      {0, "", "", "The server offers no login method."},
      {0, "GSSAPI OTHER", "",
       "The server offers GSSAPI OTHER. GSSAPI is not known to this system."},
      {kClear, passwords, "",
       "The server offers LOGIN PLAIN. PLAIN needs an encrypted connection, or PlainTextLogin. "
       "LOGIN needs an encrypted connection, or PlainTextLogin."},
      {kNoPassword | kNoToken, "PLAIN XOAUTH2", "",
       "The server offers PLAIN XOAUTH2. XOAUTH2 needs an access token. PLAIN needs a password."},
      {kNoName, "PLAIN", "", "The server offers PLAIN. PLAIN needs a login name."},
      {0, "PLAIN", "SCRAM-SHA-1 FOO",
       "The server offers PLAIN. SCRAM-SHA-1 is not offered. FOO is not known here."},
      {0, "SCRAM-SHA-1-PLUS", "SCRAM-SHA-1-PLUS",
       "The server offers SCRAM-SHA-1-PLUS. SCRAM-SHA-1-PLUS needs a channel binding, which this "
       "connection does not give."},
      {0, "A\r\n\x1B", "", "The server offers A ."},
  };
  for (const auto& test : kCases) {
    LoginWorld world;
    if ((test.facts & kNoName) != 0) world.credentials.loginName.clear();
    if ((test.facts & kNoPassword) != 0) world.credentials.password.clear();
    if ((test.facts & kNoToken) != 0) world.credentials.accessToken.clear();
    if ((test.facts & kBinding) != 0) world.connection.binding = {"tls-server-end-point", "x"};
    world.connection.encrypted = (test.facts & kClear) == 0;
    LoginRules rules;
    rules.plainTextLogin = (test.facts & kPlainText) != 0;
    if (!test.wanted.empty()) rules.wanted = Split(test.wanted, " ");
    const auto offered =
        test.offered.empty() ? std::vector<std::string>() : Split(test.offered, " ");
    const auto choice = ChooseMechanism(offered, rules, world.context);
    EXPECT_EQ(test.expected, choice.mechanism ? choice.mechanism->Name() : choice.reason);
  }
}

TEST(Choice, NamesAreReadAsPeopleWriteThem) {
  const struct {
    std::string_view text;
    std::string_view expected;
  } kCases[] = {
      {"", ""},
      {" ,\t", ""},
      {"plain", "PLAIN"},
      {",scram-sha-256 ,PLAIN\tapop, User ", "SCRAM-SHA-256 PLAIN APOP USER"},
      {"PLAIN KERBEROS", "none"},
      {"ntlm Gssapi", "NTLM GSSAPI"},
      {"PLAIN;LOGIN", "none"},
      {"PLAI", "none"},
  };
  for (const auto& test : kCases) {
    const auto names = ReadMechanismNames(test.text);
    EXPECT_EQ(test.expected, names ? Join(*names, " ") : "none") << test.text;
  }
}

}  // namespace
}  // namespace quillon
