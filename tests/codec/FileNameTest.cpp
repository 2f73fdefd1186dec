#include <gtest/gtest.h>

#include "codec/FileName.h"
#include "platform/Platform.h"
#include "ports/FileSystem.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

using testing::TempFolder;

TEST(FileName, KeepsOnlyWhatIsHarmless) {
  const struct {
    std::string_view name;
    const char* expected;
  } kCases[] = {
      {"report.pdf", "report.pdf"},
      {"readme", "readme.TMP"},
      {"my.file.txt", "my.filetxt"},  // the second dot is dropped on purpose
      {"\xE6\x97\xA5.\xE6\x9C\xAC", "TEMPFILE.TMP"},
      {"", "TEMPFILE.TMP"},
      {"...", "TEMPFILE.TMP"},
      {"..\\..\\evil.exe", "TEMPFILE.evilexe"},
      {"C:\\autoexec.bat", "Cautoexec.bat"},
      {"/etc/passwd", "etcpasswd.TMP"},
      {"a\r\nb.t\tx", "ab.tx"},
      {std::string_view("nul\0.txt", 8), "nul_.txt"},
      {"con", "con_.TMP"},
      {"COM1.log", "COM1_.log"},
      {"Aux .x", "Aux _.x"},
      {"COM10.log", "COM10.log"},
      {"a b (1).c d", "a b (1).c d"},
      {"a.txt  ", "a.txt"},
      {"a.   ", "a.TMP"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.expected, CleanFileName(test.name));
  const auto longName = CleanFileName(std::string(400, 'b') + "." + std::string(400, 'e'));
  EXPECT_EQ(std::string(255, 'b') + "." + std::string(255, 'e'), longName);

  // Characters count, not bytes; one outside the first plane is two, as a client counts.
  std::string accents;
  for (int i = 0; i < 200; ++i) accents += "\xC3\xA9";
  EXPECT_EQ(std::string(55, 'b') + ".TMP", CleanFileName(accents + std::string(100, 'b')));
  EXPECT_EQ(std::string(253, 'b') + ".TMP",
            CleanFileName("\xF0\x9F\x98\x80" + std::string(300, 'b')));
}

TEST(FileName, ClashesWriteOverTheEndOfTheBaseName) {
  TempFolder folder;
  const auto files = MakeFileSystem();
  int draws = 0;
  const auto letters = [&] { return ++draws < 3 ? std::string("ABC") : std::string("XYZ"); };
  const auto create = [&](const char* name) {
    const auto created = CreateAttachmentFile(*files, folder.Path(), name, false, letters);
    EXPECT_NE(nullptr, created.file);
    return created.path.substr(folder.Path().size() + 1);
  };
  EXPECT_EQ("report.pdf", create("report.pdf"));
  for (int i = 1; i <= 9; ++i)
    EXPECT_EQ("repor" + std::to_string(i) + ".pdf", create("report.pdf"));
  EXPECT_EQ("repABC.pdf", create("report.pdf"));
  EXPECT_EQ("repXYZ.pdf", create("report.pdf"));  // a name drawn twice costs another draw
  EXPECT_EQ("a.b", create("a.b"));
  EXPECT_EQ("a1.b", create("a.b"));  // no longer than the suffix: it grows
}

TEST(FileName, ADirectoryThatTakesNoFileIsGivenUpAtOnce) {
  TempFolder folder;
  const auto files = MakeFileSystem();
  int draws = 0;
  const auto created = CreateAttachmentFile(*files, folder.Path("none"), "a.txt", false, [&] {
    ++draws;
    return std::string("ABC");
  });
  EXPECT_EQ(nullptr, created.file);
  EXPECT_EQ(0, draws);

  ASSERT_TRUE(files->MakeDirectory(folder.Path("a.txt")));
  EXPECT_EQ(folder.Path("a1.txt"), UniqueAttachmentPath(*files, folder.Path(), "a.txt", false));
}

}  // namespace
}  // namespace quillon
