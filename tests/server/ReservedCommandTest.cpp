#include <gtest/gtest.h>

#include "core/WholeFile.h"
#include "server/ConfigurationFile.h"
#include "support/FaultyFileSystem.h"
#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::BytesOf;
using testing::ContentOf;
using testing::FailureOf;
using testing::TestWorld;

class ReservedCommandTest : public ::testing::Test {
 protected:
  std::string Run(const std::string& command) {
    return FailureOf([&] { server_->Put(Property::undocumented1, command); });
  }
  std::string Path(const char* name) { return world_.folder.Path(name); }
  void GivenFile(const char* name, std::string_view content) {
    ASSERT_TRUE(WriteWholeFile(*world_.files, Path(name), BytesOf(content)));
  }
  std::string Content(const char* name) { return ContentOf(*world_.files, Path(name)); }

  TestWorld world_;
  std::unique_ptr<Server> server_ = world_.NewServer();
};

TEST_F(ReservedCommandTest, MalformedCommandsChangeNothing) {
  for (const auto* command : {"",
                              "CHARSET",
                              "CHARSET|x",
                              "|CHARSET",
                              "|CHARSET|",
                              "|CHARSET|a b",
                              "|CHARSET|a|b",
                              "|CHARSET|x\"y",
                              "|NOTHING|x",
                              "|MSG_LINES|-1",
                              "|MSG_LINES|many",
                              "|MSG_LINES|9999999999",
                              "|KEEP_TEMP|1",
                              "|BLOCK_SIZE|-1",
                              "|SINGLE_HEADER|x",
                              "|MAIL_SERVICE|none",
                              "|HELO|1",
                              "|COPY_FILE|x",
                              "||",
                              "|CREATE_DIRECTORY|"}) {
    EXPECT_EQ("529 Invalid property value.", Run(command)) << command;
  }
  EXPECT_EQ("us-ascii", world_.shared.internet.characterSet);
  EXPECT_EQ(Value(std::string()), server_->Get(Property::undocumented1));
}

TEST_F(ReservedCommandTest, SettingsTakeEffect) {
  EXPECT_EQ("", Run(" |charset| iso-8859-1"));
  EXPECT_EQ("", Run("|REPLY-TO|boss@example.org"));
  EXPECT_EQ("", Run("|ONLY_RECIP| one@example.org "));
  EXPECT_EQ("", Run("|MSG_LINES|20"));
  EXPECT_EQ("", Run("|MAIL_SERVICE|internet"));
  EXPECT_EQ("", Run("|HELO|0"));
  EXPECT_EQ("", Run("|KEEP_TEMP|-1"));
  EXPECT_EQ("", Run("|BLOCK_SIZE|512"));
  EXPECT_EQ("", Run("|TEMPDIR|" + world_.folder.Path()));
  EXPECT_EQ("iso-8859-1", world_.shared.internet.characterSet);
  EXPECT_EQ(Value(std::string("boss@example.org")), server_->Get(Property::replyTo));
  EXPECT_EQ("one@example.org", world_.shared.switches.envelopeRecipient);
  EXPECT_EQ(20, world_.shared.switches.maximumBodyLines);
  EXPECT_EQ(Value(std::int16_t{10}), server_->Get(Property::mailSystem));
  EXPECT_FALSE(world_.shared.switches.greetWithHelo);
  EXPECT_TRUE(world_.shared.switches.keepTemporaryFiles);
  EXPECT_EQ(512, world_.shared.switches.blockSize);
  EXPECT_EQ(world_.folder.Path(), world_.shared.switches.temporaryDirectory);
  EXPECT_EQ("529 Directory does not exist.", Run("|TEMPDIR|" + Path("none")));
  EXPECT_EQ("", Run("|ONLY_RECIP|"));
  EXPECT_EQ("", world_.shared.switches.envelopeRecipient);
  EXPECT_EQ(Value(kTrue), server_->Get(Property::undocumented1));
}

TEST_F(ReservedCommandTest, FilesAndDirectories) {
  GivenFile("a.txt", "content");
  EXPECT_EQ("", Run("|CREATE_DIRECTORY|" + Path("d")));
  EXPECT_EQ("", Run("|COPY_FILE|" + Path("a.txt") + "|" + Path("d/b.txt")));
  EXPECT_EQ("content", Content("d/b.txt"));
  EXPECT_EQ("75 Undetermined error in undocumented1 property.",
            Run("|DELETE_DIRECTORY|" + Path("d")));
  EXPECT_EQ("", Run("|DELETE_FILE|" + Path("d/b.txt")));
  EXPECT_EQ("548 File does not exist.", Run("|DELETE_FILE|" + Path("d/b.txt")));
  EXPECT_EQ("547 File not specified.", Run("|DELETE_FILE|"));
  EXPECT_EQ("", Run("|DELETE_DIRECTORY|" + Path("d")));
  EXPECT_EQ("529 Directory does not exist.", Run("|DELETE_DIRECTORY|" + Path("d")));
}

TEST_F(ReservedCommandTest, CodecsWorkFromFileToFile) {
  std::string all;
  for (int i = 0; i < 1000; ++i) all += static_cast<char>(i * 7);
  GivenFile("in", all);
  GivenFile("qp", "caf=C3=A9 =\r\njoined");
  for (const std::string codec : {"BASE64", "UU"}) {
    EXPECT_EQ("", Run("|" + codec + "_ENCODE_FILE|" + Path("in") + "|" + Path("coded")));
    EXPECT_NE(all, Content("coded"));
    EXPECT_EQ("", Run("|" + codec + "_DECODE_FILE|" + Path("coded") + "|" + Path("out")));
    EXPECT_EQ(all, Content("out"));
  }
  EXPECT_EQ("", Run("|QP_DECODE_FILE|" + Path("qp") + "|" + Path("out")));
  EXPECT_EQ("caf\xC3\xA9 joined", Content("out"));
  EXPECT_EQ("529 Invalid property value.",
            Run("|BASE64_ENCODE_FILE|" + Path("in") + "|" + Path("in")));
  EXPECT_EQ(all, Content("in"));
  EXPECT_EQ("535 Error while encoding files.  Is disk full?",
            Run("|UU_ENCODE_FILE|" + Path("in") + "|" + Path("none/x")));
}

TEST(ConfigurationFile, LivesWhereItCanBeWritten) {
  TestWorld world;
  auto& files = *world.files;
  const auto beside = world.folder.Path("quillon.ini");
  EXPECT_EQ(beside, ConfigurationPath(files, world.folder.Path(), world.folder.Path("user")));
  EXPECT_FALSE(files.FileExists(beside));  // trying leaves nothing behind

  ASSERT_TRUE(files.MakeDirectory(world.folder.Path("user")));
  const auto path =
      ConfigurationPath(files, world.folder.Path("missing"), world.folder.Path("user"));
  clsINIUtilities ini(files, path);
  EXPECT_TRUE(ini.WriteString("S", "k", "v"));
  EXPECT_NE(std::string::npos, path.find("Quillon"));
}

TEST(ConfigurationFile, IsNotWhereOtherUsersCanWrite) {
  TestWorld world;
  testing::FaultyFileSystem files(*world.files);
  const auto beside = world.folder.Path("quillon.ini");
  const auto user = world.folder.Path("user");
  ASSERT_TRUE(files.MakeDirectory(user));
  ASSERT_TRUE(WriteWholeFile(files, beside, {}));
  EXPECT_EQ(beside, ConfigurationPath(files, world.folder.Path(), user));
  for (const auto& open : {world.folder.Path(), beside}) {
    files.openToOthers = open;
    EXPECT_NE(beside, ConfigurationPath(files, world.folder.Path(), user));
  }
}

}  // namespace
}  // namespace quillon
