// What the configuration file says of servers, and what comes of it and of what the script says.
#include <gtest/gtest.h>

#include "InternetWorld.h"
#include "Peers.h"
#include "core/Text.h"
#include "core/WholeFile.h"
#include "internet/SectionMerge.h"

namespace quillon::testing {
namespace {

using Scope = SecretProtector::Scope;

class ServerSectionsTest : public ::testing::Test {
 protected:
  static void Write(FileSystem& files, const clsINIUtilities& file, const std::string& text) {
    const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    ASSERT_TRUE(WriteWholeFile(files, file.Path(), bytes));
  }
  void Write(const std::string& text) { Write(*files, own, text); }

  // What the text of a section comes to, for a script that says little: "host:port security".
  std::string Smtp(const std::string& section, const InternetAccess& access) {
    Write("[server MAIL.example]\n" + section);
    SmtpSettings settings;
    settings.host = "mail.example";
    settings.port = scriptsPort;
    Apply(servers.For("mail.example"), access, *codePage, settings);
    const auto& security = settings.security;
    auto text = settings.host + ":" + std::to_string(settings.port) + " " +
                std::to_string(static_cast<int>(security.connection)) + " " +
                security.credentials.loginName + "/" + security.credentials.password;
    if (!settings.envelopeSender.empty()) text += " as " + settings.envelopeSender;
    if (!security.login.wanted.empty()) text += " by " + Join(security.login.wanted, "+");
    return text;
  }

  std::string FailureOfSection(const std::string& section) {
    Write("[Server m]\r\n" + section);
    try {
      servers.For("m");
    } catch (const ServerError& error) {
      EXPECT_EQ(error.Code(), 529);
      const auto place = "In the file " + own.Path() + ", section [Server m]: ";
      EXPECT_TRUE(error.Text().starts_with(place)) << error.Text();
      return error.Text().substr(std::min(place.size(), error.Text().size()));
    }
    return {};
  }

  TempFolder folder;
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  std::unique_ptr<CodePage> codePage = MakeAnsiCodePage();
  clsINIUtilities own{*files, folder.Path("own.ini")};
  clsINIUtilities machine{*files, folder.Path("machine.ini")};
  ReversingProtector protector;
  ServerSections servers{own, &machine, protector};
  std::uint16_t scriptsPort = 25;
};

TEST_F(ServerSectionsTest, OneSectionHoldsForAHost) {
  Write("[Server *]\nSMTPHost=own-others\n[Server a]\nSMTPHost=own-a\nsmtphost=late\n");
  Write(*files, machine,
        "[Server]\nMailSystem=10\n[Server a]\nSMTPHost=machine-a\n[SERVER B]\nSMTPHost=machine-b\n"
        "; comment=1\nSMTPUser=\n[server  *]\nSMTPHost=x\n");
  const std::pair<const char*, const char*> kCases[] = {
      {"A", "own-a"}, {" b ", "machine-b"}, {"c", "own-others"}, {"", "own-others"}};
  for (const auto& [host, found] : kCases) EXPECT_EQ(servers.For(host).smtp.host, found) << host;
  Write("");
  EXPECT_EQ(servers.For("c").smtp.host, std::nullopt);
  EXPECT_EQ(servers.Find("a").size(), 1U);
}

TEST_F(ServerSectionsTest, SectionGoesBeforeTheScriptAndItsNewMembersBeforeTheSection) {
  InternetAccess none;
  InternetAccess tls;
  tls.smtpSecurity = 3;
  InternetAccess plain;
  plain.smtpSecurity = 0;
  plain.smtpLoginName = "";
  plain.authentication = "";
  const std::string full =
      "SMTPHost=real.example\nSMTPPort=2525\nSMTPSecurity=StartTLS\nSMTPUser=u\nSMTPPassword=p\n"
      "SMTPSender=s@example\nAuthentication=plain, LOGIN\n";
  const struct {
    std::string section;
    const InternetAccess& access;
    std::uint16_t port;
    const char* settings;
  } kCases[] = {
      {"", none, 25, "mail.example:25 0 /"},
      {"SMTPSecurity=starttls-if-offered", none, 587, "mail.example:587 1 /"},
      {"SMTPSecurity=tls", none, 25, "mail.example:465 3 /"},
      {"SMTPSecurity=tls", none, 2525, "mail.example:465 3 /"},
      {"SMTPSecurity=tls\nSMTPPort=25", none, 587, "mail.example:25 3 /"},
      {"", tls, 25, "mail.example:465 3 /"},
      {"", tls, 2465, "mail.example:2465 3 /"},
      {full, none, 25, "real.example:2525 2 u/p as s@example by PLAIN+LOGIN"},
      {full, plain, 25, "real.example:2525 0 /p as s@example"},
      {"Authentication=PLAIN", none, 25, "mail.example:25 0 /"},
      {"Authentication=PLAIN ntlm", none, 25, "mail.example:25 0 / by PLAIN+NTLM"},
  };
  for (const auto& row : kCases) {
    scriptsPort = row.port;
    EXPECT_EQ(Smtp(row.section, row.access), row.settings) << row.section;
  }
}

TEST_F(ServerSectionsTest, MailboxIsLoggedInToInTheWaysThatAreAskedFor) {
  PopSettings script;
  script.host = "m";
  script.port = 110;
  script.loginName =
      "j\xF6"
      "e";
  script.password = "old";
  auto settings = script;
  Apply({}, {}, *codePage, settings);
  EXPECT_TRUE(settings.security == ServerSecurity());
  Write("[Server m]\nPOPUser=ann\nPOPPassword=new\n");
  Apply(servers.For("m"), {}, *codePage, settings);
  EXPECT_EQ(settings.loginName + settings.password, "annnew");
  EXPECT_FALSE(settings.security.HasLogin());
  settings = script;
  Write("[Server m]\nPOPSecurity=tls\n");
  Apply(servers.For("m"), {}, *codePage, settings);
  EXPECT_EQ(settings.port, 995);
  EXPECT_EQ(settings.security.credentials.loginName,
            "j\xC3\xB6"
            "e");
  EXPECT_EQ(settings.security.credentials.password, "old");
}

TEST_F(ServerSectionsTest, WhatCannotBeUnderstoodIsSaid) {
  const std::pair<const char*, const char*> kCases[] = {
      {"SMTPSecurity=ssl",
       "SMTPSecurity cannot be \"ssl\": it is one of none, starttls-if-offered, starttls and tls."},
      {"SMTPSecurty=tls", "there is no key \"SMTPSecurty\" for servers."},
      {"SMTPPort=0", "SMTPPort cannot be \"0\": it is a number from 1 to 65535."},
      {"POPPort=65536", "POPPort cannot be \"65536\": it is a number from 1 to 65535."},
      {"POPHost=a:995",
       "POPHost cannot be \"a:995\": it is a host name or address, without a "
       "port."},
      {"PlainTextLogin=maybe", "PlainTextLogin cannot be \"maybe\": it is TRUE or FALSE."},
      {"Pin=key:12",
       "Pin cannot be \"key:12\": it is 64 hexadecimal digits, with or without \"key:\" in front."},
      {"TokenURL=http://a",
       "TokenURL cannot be \"http://a\": it is an address that begins with https://."},
      {"Authentication=PLAIN;LOGIN",
       "Authentication cannot be \"PLAIN;LOGIN\": it is a list of known login methods, such as "
       "PLAIN LOGIN."},
      {"SMTPPassword={account}ann:x",
       "SMTPPassword is encrypted for another account. Set it again with quillon.exe /Configure, "
       "as the account that runs the scripts or with /Machine."},
      {"SMTPPort=\nPOPHost=::1\nDSN=yes\nPOPPassword=clear", ""},
  };
  for (const auto& [section, failure] : kCases) EXPECT_EQ(FailureOfSection(section), failure);
}

TEST_F(ServerSectionsTest, SecretsAreWrittenForWhomTheyAreMeant) {
  servers.Put("m", "smtppassword", "secret", Scope::kAccount);
  servers.Put("m", "POPPassword", "secret", Scope::kMachine);
  servers.Put("m", "SMTPPort", "25", Scope::kMachine);
  EXPECT_EQ(own.ReadString("Server m", "SMTPPassword"), "{account}joe:terces");
  EXPECT_EQ(machine.ReadString("Server m", "POPPassword"), "{machine}all:terces");
  EXPECT_EQ(servers.For("m").smtp.password, "secret");
  servers.Put("m", "SMTPPassword", "", Scope::kAccount);
  EXPECT_EQ(servers.For("m").smtp.password, std::nullopt);
  for (const auto* const key : {"SMTPSecurity", "Nonsense"}) {
    EXPECT_EQ(CodeOf([&] { servers.Put("m", key, "bad", Scope::kMachine); }), 529);
  }
  ServerSections alone{own, nullptr, protector};
  EXPECT_EQ(CodeOf([&] { alone.Put("m", "DSN", "1", Scope::kMachine); }), 75);
}

TEST_F(ServerSectionsTest, RefreshTokenIsReplacedWhereItsAccountStands) {
  const auto section = [](const std::string& name, const std::string& client) {
    return "[Server " + name + "]\nClientId=" + client + "\nRefreshToken={machine}all:dlo\n";
  };
  Write(section("a", "1") + section("b", "2"));
  Write(*files, machine, section("c", "1") + "[Server d]\nNonsense=1\nRefreshToken=old\n");
  servers.ReplaceRefreshToken(servers.For("a").oauth, "new");
  const std::pair<const char*, const char*> kTokens[] = {{"a", "new"}, {"b", "old"}, {"c", "new"}};
  for (const auto& [name, token] : kTokens) {
    EXPECT_EQ(servers.For(name).oauth.refreshToken, token) << name;
  }
  EXPECT_EQ(own.ReadString("Server a", "RefreshToken"), "{machine}all:wen");
}

// A script of long ago names a server and no more.
TEST_F(ServerSectionsTest, OldScriptGoesWhereTheSectionSays) {
  InternetWorld world;
  bool servePop = true;
  world.network.accept = [&] { return std::make_shared<ObligingPeer>(servePop); };
  auto& configuration = world.configuration;
  configuration.WriteString("Server pop.example", "POPHost", "inside.example");
  configuration.WriteString("Server pop.example", "POPUser", "ann");
  world.instance.loginName.clear();
  EXPECT_EQ(world.backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  EXPECT_TRUE(world.prompt.asked.empty());
  EXPECT_EQ(world.shared.headerOrigin.mailbox, "ann@INSIDE.EXAMPLE");
  EXPECT_EQ(configuration.ReadString("Internet", "POPServer"), "pop.example");

  servePop = false;
  world.instance.smtpServer.clear();
  configuration.WriteString("Server *", "SMTPHost", "out.example");
  EXPECT_EQ(world.backEnd.Send(world.request).number, kBackEndSuccess);
  configuration.WriteString("Server *", "SMTPSecurity", "TSL");
  EXPECT_EQ(CodeOf([&] { world.backEnd.Send(world.request); }), 529);
}

}  // namespace
}  // namespace quillon::testing
