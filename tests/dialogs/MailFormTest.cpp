#include <gtest/gtest.h>

#include "core/RecipientText.h"
#include "dialogs/FileList.h"
#include "dialogs/MailForm.h"
#include "platform/Platform.h"
#include "ports/FileSystem.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

using Texts = std::vector<std::string>;

class MailFormTest : public ::testing::Test {
 protected:
  std::string MakeFile(const std::string& name, std::size_t size) {
    auto path = folder.Path(name);
    const std::vector<std::uint8_t> bytes(size);
    files->Open(path, OpenMode::kCreate)->Write(bytes);
    return path;
  }
  // The code and the field of what is wrong, 0 when nothing is.
  std::pair<int, MailField> WrongWith(const MailForm& form) {
    try {
      EditedComposition(form, before, instance, *files);
      return {0, MailField::None};
    } catch (const MailFormFailure& failure) {
      return {failure.Code(), failure.Field()};
    }
  }

  TempFolder folder;
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  InstanceState instance;
  Composition before;
};

TEST_F(MailFormTest, RecipientsSplitAgainAsTheyWere) {
  const struct {
    Texts recipients;
    std::string line;
    Texts again;  // when it differs
  } cases[] = {
      {{}, "", {}},
      {{"a@x", "Bob <b@x>"}, "a@x, Bob <b@x>", {}},
      {{"Doe, John <j@x>", "c@x"}, R"("Doe, John" <j@x>, c@x)", {R"("Doe, John" <j@x>)", "c@x"}},
      {{R"("Doe, John" <j@x>)"}, R"("Doe, John" <j@x>)", {}},
      {{"Doe, \"J\" <j@x>"}, R"("Doe, 'J'" <j@x>)", {R"("Doe, 'J'" <j@x>)"}},
      {{"one\r\ntwo"}, "one two", {"one two"}},
      {{"\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D <s@x>", "\xF0\x9F\x93\xA7@x"},
       "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D <s@x>, \xF0\x9F\x93\xA7@x",
       {}},
  };
  for (const auto& [recipients, line, again] : cases) {
    EXPECT_EQ(JoinRecipients(recipients, instance), line);
    EXPECT_EQ(SplitRecipients(line, instance.recipientDelimiter, instance.recipientBrackets),
              again.empty() ? recipients : again);
  }
}

TEST_F(MailFormTest, WhatIsNotTouchedStaysToTheLastByte) {
  before.to = {"Doe, John", "b@x"};
  before.subject = "two\r\nlines";
  before.body = std::string("a\nb\0c", 5);
  before.certify = kTrue;
  before.importance = 5;
  before.attachments = {{MakeFile("a.png", 1), "a.png", {"image/png", "a@b"}, false, true}};
  auto form = FormOf(before, instance);
  EXPECT_EQ(form.subject, "two lines");
  EXPECT_EQ(form.text, std::string("a\r\nb\0c", 6));
  auto edited = EditedComposition(form, before, instance, *files);
  EXPECT_EQ(edited.to, before.to);
  EXPECT_EQ(edited.subject, before.subject);
  EXPECT_EQ(edited.body, before.body);
  EXPECT_EQ(edited.certify, kTrue);
  EXPECT_EQ(edited.importance, 5);
  EXPECT_EQ(edited.attachments.at(0).label.contentId, "a@b");
  EXPECT_TRUE(edited.attachments.at(0).isInline);
  form.to = "c@x,, d <e,f@x>";
  form.text = "new";
  form.receipt = false;
  edited = EditedComposition(form, before, instance, *files);
  EXPECT_EQ(edited.to, (Texts{"c@x", "d <e,f@x>"}));
  EXPECT_EQ(edited.body, "new");
  EXPECT_EQ(edited.certify, kFalse);
}

TEST_F(MailFormTest, IsCheckedByTheRulesOfTheMembers) {
  std::string many;
  for (int i = 0; i <= 32767; ++i) many += "a,";
  MailForm good;
  good.to = "a@x";
  auto nobody = good;
  nobody.to = " , ";
  auto tooManyTo = good;
  auto tooManyCc = good;
  auto tooManyBcc = good;
  auto missing = good;
  auto tooManyFiles = good;
  tooManyTo.to = tooManyCc.cc = tooManyBcc.bcc = many;
  missing.files = {{MakeFile("here.txt", 1), "a"}, {folder.Path("gone.txt"), "b"}};
  tooManyFiles.files.resize(32768);
  const struct {
    MailForm form;
    int code;
    MailField field;
  } cases[] = {{good, 0, MailField::None},           {nobody, 516, MailField::To},
               {tooManyTo, 519, MailField::To},      {tooManyCc, 518, MailField::Cc},
               {tooManyBcc, 517, MailField::Bcc},    {missing, 521, MailField::Files},
               {tooManyFiles, 520, MailField::Files}};
  for (const auto& [form, code, field] : cases) {
    EXPECT_EQ(WrongWith(form), std::pair(code, field));
  }
}

TEST_F(MailFormTest, FilesAreAddedOnceAndRenamedToWhatIsAName) {
  const auto path = MakeFile("report.txt", 1536);
  FileList list({{folder.Path("gone.txt"), "gone"}}, *files);
  list.Add("  " + path + " ");
  list.Add(path);
  list.Add(folder.Path() + files->Separator() + "." + files->Separator() + "report.txt");
  list.Add(" ");
  EXPECT_THROW(list.Add(folder.Path("missing")), MailFormFailure);
  EXPECT_THROW(list.Add(folder.Path()), MailFormFailure);  // a directory
  ASSERT_EQ(list.Files().size(), 2U);
  EXPECT_EQ(list.LineOf(0).size, "does not exist");
  EXPECT_EQ(list.LineOf(1).name, "report.txt");
  EXPECT_EQ(list.LineOf(1).size, "1.5 KB");
  for (const auto* const name : {"", "  ", "a/b", "a\\b", "a:b", "a\nb"}) {
    EXPECT_FALSE(list.Rename(1, name)) << name;
  }
  EXPECT_TRUE(list.Rename(1, " Bericht f\xC3\xBCr M\xC3\xA4rz.txt "));
  EXPECT_EQ(FilesText(list.Files()), "2 files: gone; Bericht f\xC3\xBCr M\xC3\xA4rz.txt");
  list.Remove(0);
  EXPECT_EQ(list.Files().front().path, path);
}

TEST(FileList, SizesInWords) {
  const std::pair<std::uint64_t, const char*> cases[] = {
      {0, "0 bytes"},       {1, "1 byte"},       {1023, "1023 bytes"},
      {1024, "1.0 KB"},     {10239, "9.9 KB"},   {10240, "10 KB"},
      {1048575, "1023 KB"}, {1048576, "1.0 MB"}, {5368709120, "5.0 GB"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(SizeText(bytes), text);
}

}  // namespace
}  // namespace quillon::testing
