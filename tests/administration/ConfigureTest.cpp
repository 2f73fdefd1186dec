#include <gtest/gtest.h>

#include "administration/ConfigureCommand.h"
#include "platform/Platform.h"
#include "support/ReversingProtector.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

class AskingConsole final : public Console {
 public:
  void WriteLine(const std::string& text) override { written += text + "\n"; }
  void Show() override {}
  std::optional<std::string> ReadSecret(const std::string& question) override {
    asked += question;
    return secret;
  }

  std::string written;
  std::string asked;
  std::optional<std::string> secret;
};

class ConfigureTest : public ::testing::Test {
 protected:
  // "+" for success or "-", then what is said, with the files' names for their paths.
  std::string Run(const std::vector<std::string>& arguments) {
    console.written.clear();
    const bool done = Configure(arguments, servers, console);
    auto text = (done ? "+" : "-") + console.written;
    for (auto at = text.find(folder.Path()); at != std::string::npos;
         at = text.find(folder.Path())) {
      text.erase(at, folder.Path().size() + 1);
    }
    return text;
  }

  TempFolder folder;
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  clsINIUtilities own{*files, folder.Path("own.ini")};
  clsINIUtilities machine{*files, folder.Path("machine.ini")};
  ReversingProtector protector;
  ServerSections servers{own, &machine, protector};
  AskingConsole console;
};

TEST_F(ConfigureTest, WritesAndShowsASectionWithoutItsSecrets) {
  EXPECT_EQ(Run({"m", "smtpsecurity", "TLS"}),
            "+SMTPSecurity is set in section [Server m] of own.ini.\n");
  console.secret = "hidden one";
  EXPECT_EQ(Run({"m", "SMTPPassword"}),
            "+SMTPPassword is set in section [Server m] of own.ini, encrypted for this account.\n");
  EXPECT_EQ(console.asked, "SMTPPassword: ");
  EXPECT_EQ(servers.For("m").smtp.password, "hidden one");
  own.WriteString("Server m", "POPPassword", "in clear");
  EXPECT_EQ(Run({"m", "POPPort", "25", "-machine"}),
            "+POPPort is set in section [Server m] of machine.ini.\n");
  EXPECT_EQ(Run({"M"}),
            "+[Server m] in own.ini\n  SMTPSecurity=TLS\n  SMTPPassword=(set, for one account)\n"
            "  POPPassword=(set, not encrypted)\n"
            "[Server m] in machine.ini (does not hold: the one above goes before it)\n"
            "  POPPort=25\n");
  EXPECT_EQ(Run({"m", "SMTPPassword", ""}),
            "+SMTPPassword is not set any more in section [Server m] of own.ini.\n");
  own.WriteString("Server m", "SMTPPasword", "mistyped");
  const auto shown = Run({"m"});
  EXPECT_TRUE(shown.starts_with("-[Server m]")) << shown;
  EXPECT_NE(shown.find("there is no key \"SMTPPasword\""), std::string::npos) << shown;
  EXPECT_EQ(shown.find("mistyped"), std::string::npos);
}

TEST_F(ConfigureTest, RefusesWhatCannotBeRight) {
  const std::vector<std::string> kRefused[] = {
      {},           {"a]b", "DSN", "1"},    {"m", "DSN", "1", "2"},       {"m"},
      {"m", "DSN"}, {"m", "Nonsense", "1"}, {"m", "SMTPSecurity", "ssl"}, {"m", "SMTPPassword"},
  };
  for (const auto& arguments : kRefused) {
    const auto said = Run(arguments);
    EXPECT_EQ(said[0], '-') << said;
    EXPECT_GT(said.size(), 20U);
  }
  console.secret = "";
  EXPECT_EQ(Run({"m", "SMTPPassword"})[0], '-');
  EXPECT_FALSE(files->FileExists(own.Path()));
}

}  // namespace
}  // namespace quillon::testing
