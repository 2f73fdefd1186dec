#include <gtest/gtest.h>
#include <map>

#include "core/WholeFile.h"
#include "mail/INIUtilities.h"
#include "platform/Platform.h"
#include "ports/FileSystem.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

class INIUtilitiesTest : public ::testing::Test {
 protected:
  void Given(std::string_view content) {
    ASSERT_TRUE(WriteWholeFile(*files_, ini_.Path(), testing::BytesOf(content)));
  }
  std::string Content() { return testing::ContentOf(*files_, ini_.Path()); }

  testing::TempFolder folder_;
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  clsINIUtilities ini_{*files_, folder_.Path("quillon.ini")};
};

TEST_F(INIUtilitiesTest, ReadsWhatPeopleWrite) {
  Given(
      "\xEF\xBB\xBF; a comment\n[ internet ]\r\nsmtpserver =  mail.example.org  \n"
      "Quoted=\" two blanks \"\n;Off=1\nFlag=yes\nCount=12\nEmpty=\n[Other]\nFlag=FALSE\nCount=x");
  EXPECT_EQ("mail.example.org", ini_.ReadString("Internet", "SMTPServer"));
  EXPECT_EQ(" two blanks ", ini_.ReadString("internet", "QUOTED"));
  EXPECT_EQ("none", ini_.ReadString("Internet", "Off", "none"));
  EXPECT_EQ("", ini_.ReadString("Internet", "Empty", "none"));
  EXPECT_TRUE(ini_.ReadTrueFalse("Internet", "Flag", false));
  EXPECT_FALSE(ini_.ReadTrueFalse("Other", "Flag", true));
  EXPECT_TRUE(ini_.ReadTrueFalse("Other", "None", true));
  EXPECT_EQ(12, ini_.ReadNumber("Internet", "Count", 5));
  EXPECT_EQ(5, ini_.ReadNumber("Other", "Count", 5));
}

TEST_F(INIUtilitiesTest, WritingLeavesTheRestOfTheFileAlone) {
  Given("; mine\n[A]\nkey = 1 ; kept\n\n[B]\nkey=2");
  EXPECT_TRUE(ini_.WriteString("a", "New", "n"));
  EXPECT_TRUE(ini_.WriteNumber("B", "KEY", 3));
  EXPECT_TRUE(ini_.WriteTrueFalse("B", "On", true));
  EXPECT_TRUE(ini_.WriteString("C", "text", "one\r\ntwo"));
  EXPECT_EQ(
      "; mine\n[A]\nkey = 1 ; kept\nNew=n\r\n\n[B]\nKEY=3\r\nOn=TRUE\r\n[C]\r\ntext=one  two\r\n",
      Content());
  EXPECT_TRUE(ini_.Remove("B", "key"));
  EXPECT_EQ("", ini_.ReadString("B", "key"));
}

TEST_F(INIUtilitiesTest, ValuesComeBackAsWritten) {
  std::string every;
  for (int c = 1; c < 256; ++c) {
    if (c != '\r' && c != '\n') every += static_cast<char>(c);
  }
  for (const auto& value : {every, std::string("\"quoted\""), std::string(" blanks "),
                            std::string("a=b;c"), std::string("[x]")}) {
    ASSERT_TRUE(ini_.WriteString("S", "plain", value));
    ASSERT_TRUE(ini_.WriteScrambled("S", "secret", value));
    EXPECT_EQ(value, ini_.ReadString("S", "plain"));
    EXPECT_EQ(value, ini_.ReadScrambled("S", "secret"));
    EXPECT_EQ(std::string::npos, ini_.ReadString("S", "secret").find(value));
  }
  EXPECT_EQ("", ini_.ReadScrambled("S", "plain"));
}

TEST_F(INIUtilitiesTest, MailSystemsAndEncodingsHaveKeywords) {
  const struct {
    MailSystemId system;
    const char* keyword;
    MailSystemId readBack;
  } kCases[] = {
      {0, "UNKNOWN", 0},         {1, "MAPI", 1}, {2, "VIM", 2},     {3, "MHS", 3},
      {5, "CSERVE", 0},          {7, "7", 7},    {8, "8", 0},       {10, "SMTP", 10},
      {9, "ACTIVEMESSAGING", 9}, {11, "11", 0},  {20, "VINES", 20},
  };
  for (const auto& test : kCases) {
    ASSERT_TRUE(ini_.WriteMailSystem("Mail", "System", test.system));
    EXPECT_EQ(test.keyword, ini_.ReadString("Mail", "System"));
    EXPECT_EQ(test.readBack, ini_.ReadMailSystem("Mail", "System"));
  }
  for (const auto& [keyword, system] : std::map<std::string, MailSystemId>{
           {" smtp/pop", 10}, {"Banyan Vines", 20}, {"5", 5}, {"6", 0}, {"110", 0}, {"x", 0}}) {
    ASSERT_TRUE(ini_.WriteString("Mail", "System", keyword));
    EXPECT_EQ(system, ini_.ReadMailSystem("Mail", "System")) << keyword;
  }
  ASSERT_TRUE(ini_.WriteAttachmentEncoding("Mail", "Encoding", 2));
  EXPECT_EQ("MIME", ini_.ReadString("Mail", "Encoding"));
}

}  // namespace
}  // namespace quillon
