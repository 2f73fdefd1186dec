#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "administration/AuthorizeCommand.h"
#include "internet/ServerSections.h"
#include "mail/INIUtilities.h"
#include "oauth/ScriptedHttps.h"
#include "platform/Platform.h"
#include "support/FakeNetwork.h"
#include "support/ReversingProtector.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

class PrintedConsole final : public Console {
 public:
  void WriteLine(const std::string& text) override { waiting_ += text + "\n"; }
  void Show() override { shown += std::exchange(waiting_, {}); }
  std::optional<std::string> ReadSecret(const std::string&) override { return std::nullopt; }

  std::string shown;

 private:
  std::string waiting_;
};

TEST(Authorize, ShowsTheCodeWhileItWaitsAndStoresTheToken) {
  constexpr const char* kToken = R"({"access_token":"a","refresh_token":"refresh-1"})";
  const OAuthAccount account{"https://a/token", "https://a/device", "id", "secret", "", "mail"};
  auto without = account;
  without.deviceUrl.clear();
  const struct {
    OAuthAccount account;
    bool storable;
    const char* last;
    const char* stored;
  } cases[] = {
      {account, true, "The permission has been given and is stored.\n", "refresh-1"},
      {account, false, "The refresh token could not be stored: the disk is full\n", ""},
      {without, true, "DeviceURL is no address that begins with https://.\n", ""},
  };
  for (const auto& row : cases) {
    FakeNetwork loop;
    ScriptedHttps https{loop};
    PrintedConsole console;
    std::string stored;
    https.Say(200, R"({"device_code":"device-1","user_code":"ABCD","expires_in":600,)"
                   R"("verification_uri":"https://a/enter"})");
    https.Say(200, kToken, 1000);
    loop.Post([&] { EXPECT_EQ("", console.shown); });
    Timer later(loop, [&] { EXPECT_NE(std::string::npos, console.shown.find("  ABCD\n")); });
    later.Start(3000);
    const bool good = Authorize({loop, https, console}, row.account, [&](const std::string& token) {
      if (!row.storable) throw std::runtime_error("the disk is full");
      stored = token;
    });
    EXPECT_EQ(*row.stored != '\0', good);
    EXPECT_EQ(row.stored, stored);
    EXPECT_TRUE(console.shown.ends_with(row.last)) << console.shown;
    EXPECT_EQ(std::string::npos, console.shown.find("refresh-1"));
    EXPECT_EQ(std::string::npos, console.shown.find("device-1"));
  }
}

class AuthorizeServerTest : public ::testing::Test {
 protected:
  void Write(clsINIUtilities& file, const std::string& section) {
    file.WriteString(section, "TokenURL", "https://a/token");
    file.WriteString(section, "DeviceURL", "https://a/device");
    file.WriteString(section, "ClientId", "id");
    // What another account has left is no hindrance.
    file.WriteString(section, "RefreshToken", "{account}eva:1-hserfer");
  }
  // What is stored where, or what is said.
  std::string Run(const std::vector<std::string>& arguments) {
    FakeNetwork loop;
    ScriptedHttps https{loop};
    PrintedConsole console;
    https.Say(200, R"({"device_code":"d","user_code":"ABCD","verification_uri":"https://a/e"})");
    https.Say(200, R"({"access_token":"a","refresh_token":"refresh-9"})");
    if (!Authorize(arguments, servers, {loop, https, console})) return console.shown;
    return own.ReadString("Server One", "RefreshToken") + "|" +
           own.ReadString("Server *", "RefreshToken") + "|" +
           machine.ReadString("Server Two", "RefreshToken") + "|" +
           own.ReadString("Server Two", "RefreshToken");
  }

  TempFolder folder;
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  clsINIUtilities own{*files, folder.Path("own.ini")};
  clsINIUtilities machine{*files, folder.Path("machine.ini")};
  ReversingProtector protector;
  ServerSections servers{own, &machine, protector};
};

TEST_F(AuthorizeServerTest, TheTokenIsStoredInTheSectionThatHolds) {
  EXPECT_NE(std::string::npos, Run({"one"}).find("There is no section [Server one]"));
  Write(own, "Server One");
  EXPECT_EQ("{account}joe:9-hserfer|||", Run({"ONE"}));
  EXPECT_NE(std::string::npos, Run({"one", "/machine"}).find("Leave /Machine out"));
  Write(machine, "Server Two");
  EXPECT_EQ("{account}joe:9-hserfer||{machine}all:9-hserfer|", Run({"two"}));
  Write(own, "Server *");
  EXPECT_EQ("{account}joe:9-hserfer|{account}joe:9-hserfer|{machine}all:9-hserfer|",
            Run({"three"}));
  own.WriteString("Server *", "SMTPSecurity", "perhaps");
  EXPECT_NE(std::string::npos, Run({"three"}).find("SMTPSecurity"));
  EXPECT_NE(std::string::npos, Run({}).find("/Authorize NAME"));
  EXPECT_NE(std::string::npos, Run({"one", "two"}).find("/Authorize NAME"));
}

}  // namespace
}  // namespace quillon::testing
