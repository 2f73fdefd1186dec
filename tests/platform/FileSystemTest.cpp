#include <array>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "core/WholeFile.h"
#include "platform/Platform.h"
#include "ports/FileSystem.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

using testing::BytesOf;
using testing::ContentOf;
using testing::TempFolder;

class FileSystemTest : public ::testing::Test {
 protected:
  bool Write(const std::string& path, OpenMode mode, std::string_view text) {
    const auto file = files_->Open(path, mode);
    return file && file->Write(BytesOf(text)) && file->Close();
  }

  TempFolder folder_;
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
};

TEST_F(FileSystemTest, AnOwnFileIsNobodyElses) {
  const std::string path = folder_.Path("mine");
  auto mine = files_->Open(path, OpenMode::kOwn);
  ASSERT_TRUE(mine);
  EXPECT_TRUE(mine->Write(BytesOf("text")));
  EXPECT_EQ(files_->Open(path, OpenMode::kOwn), nullptr);
  mine.reset();
  EXPECT_NE(files_->Open(path, OpenMode::kOwn), nullptr);
  EXPECT_EQ(ContentOf(*files_, path), "text");
}

TEST_F(FileSystemTest, ListsWhatBeginsSo) {
  ASSERT_TRUE(files_->MakeDirectory(folder_.Path("a.directory")));
  ASSERT_TRUE(Write(folder_.Path("a.\u00e9"), OpenMode::kCreate, "x"));
  ASSERT_TRUE(Write(folder_.Path("b.x"), OpenMode::kCreate, "x"));
  std::map<std::string, bool> found;
  for (const auto& entry : files_->List(folder_.Path(), "a.")) {
    found[entry.name] = entry.isDirectory;
  }
  EXPECT_EQ(found, (std::map<std::string, bool>{{"a.directory", true}, {"a.\u00e9", false}}));
  EXPECT_EQ(files_->List(folder_.Path(), "").size(), 3U);
  EXPECT_TRUE(files_->List(folder_.Path("missing"), "").empty());
}

TEST_F(FileSystemTest, OpenModes) {
  const std::string path = folder_.Path("a");
  EXPECT_EQ(files_->Open(path, OpenMode::kRead), nullptr);
  EXPECT_TRUE(Write(path, OpenMode::kCreateNew, "one two"));
  EXPECT_FALSE(Write(path, OpenMode::kCreateNew, "x"));
  EXPECT_EQ(ContentOf(*files_, path), "one two");
  EXPECT_TRUE(Write(path, OpenMode::kCreate, "one"));
  EXPECT_TRUE(Write(path, OpenMode::kAppend, ", two"));
  EXPECT_TRUE(Write(folder_.Path("b"), OpenMode::kAppend, "new"));
  EXPECT_EQ(ContentOf(*files_, path), "one, two");
  for (const OpenMode mode : {OpenMode::kRead, OpenMode::kCreate, OpenMode::kAppend}) {
    EXPECT_EQ(files_->Open(folder_.Path(), mode), nullptr);
    EXPECT_EQ(files_->Open(folder_.Path("no/such"), mode), nullptr);
  }
}

TEST_F(FileSystemTest, ReadingAndSeeking) {
  const std::string path = folder_.Path("a");
  ASSERT_TRUE(Write(path, OpenMode::kCreate, "0123456789"));
  const auto file = files_->Open(path, OpenMode::kRead);
  ASSERT_NE(file, nullptr);
  std::array<uint8_t, 8> buffer{};
  EXPECT_EQ(file->Size(), 10U);
  EXPECT_EQ(file->Read(buffer), 8U);
  EXPECT_EQ(file->Read(buffer), 2U);
  EXPECT_EQ(file->Read(buffer), 0U);
  EXPECT_TRUE(file->Seek(9));
  EXPECT_EQ(file->Read(buffer), 1U);
  EXPECT_EQ(buffer[0], '9');
  // Beyond 4 GiB nothing is cut off: that would be the place of "5".
  EXPECT_TRUE(file->Seek((uint64_t{1} << 32) + 5));
  EXPECT_EQ(file->Read(buffer), 0U);
  EXPECT_FALSE(file->Write(BytesOf("x")));
  EXPECT_TRUE(file->Close());
  EXPECT_TRUE(file->Close());
  EXPECT_EQ(file->Read(buffer), std::nullopt);
}

TEST_F(FileSystemTest, ModificationTimesAreLocal) {
  using namespace std::chrono;
  const std::string path = folder_.Path("a");
  ASSERT_TRUE(Write(path, OpenMode::kCreate, "x"));
  // In winter and in summer, in whatever zone the test runs.
  for (const sys_seconds set : {sys_seconds(sys_days(2021y / January / 31)) + 23h + 59min + 58s,
                                sys_seconds(sys_days(2016y / July / 1)) + 1s}) {
    std::filesystem::last_write_time(path, file_clock::from_sys(set));
    const auto local = files_->Open(path, OpenMode::kRead)->ModificationTime();
    ASSERT_TRUE(local);
    const sys_days day = year(local->year) / local->month / local->day;
    EXPECT_EQ(day + hours(local->hour) + minutes(local->minute) + seconds(local->second) -
                  minutes(local->utcOffset),
              set);
    EXPECT_EQ(weekday(day).c_encoding(), static_cast<unsigned>(local->weekday));
  }
}

TEST_F(FileSystemTest, SameFileKnowsLinks) {
  const std::string path = folder_.Path("Long Name Of A File.text");
  const std::string link = folder_.Path("link");
  const std::string other = folder_.Path("other");
  ASSERT_TRUE(Write(path, OpenMode::kCreate, "x"));
  ASSERT_TRUE(Write(other, OpenMode::kCreate, "x"));
  std::filesystem::create_hard_link(path, link);
  EXPECT_TRUE(files_->SameFile(path, path));
  EXPECT_TRUE(files_->SameFile(path, link));
  EXPECT_TRUE(files_->SameFile(path, files_->ShortPath(path)));
  EXPECT_FALSE(files_->SameFile(path, other));
  EXPECT_FALSE(files_->SameFile(path, folder_.Path("none")));
  EXPECT_FALSE(files_->SameFile(folder_.Path("none"), folder_.Path("none")));
}

TEST_F(FileSystemTest, NamesInEveryScriptAndLongPaths) {
  const std::string name = "Gr\xC3\xBC\xC3\x9F \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x93\x8E.txt";
  ASSERT_TRUE(Write(folder_.Path(name), OpenMode::kCreate, "x"));
  EXPECT_EQ(folder_.Names(), std::vector<std::string>{name});

  std::string directory = folder_.Path();
  for (int i = 0; i < 4; ++i) {
    directory = WithSeparator(*files_, directory) + std::string(100, static_cast<char>('a' + i));
    ASSERT_TRUE(files_->MakeDirectory(directory));
  }
  const std::string path = WithSeparator(*files_, directory) + "file";
  EXPECT_TRUE(Write(path, OpenMode::kCreateNew, "deep"));
  EXPECT_TRUE(files_->FileExists(path));
  EXPECT_EQ(ContentOf(*files_, path), "deep");
  EXPECT_TRUE(files_->RemoveFile(path));
  EXPECT_TRUE(files_->RemoveEmptyDirectory(directory));
  EXPECT_FALSE(files_->DirectoryExists(directory));
}

TEST_F(FileSystemTest, APathWithANulIsNoPath) {
  const std::string path = folder_.Path("a");
  ASSERT_TRUE(Write(path, OpenMode::kCreate, "kept"));
  const std::string cut = path + std::string("\0b", 2);
  EXPECT_EQ(files_->Open(cut, OpenMode::kRead), nullptr);
  EXPECT_FALSE(Write(cut, OpenMode::kCreate, "x"));
  EXPECT_FALSE(files_->FileExists(cut));
  EXPECT_FALSE(files_->RemoveFile(cut));
  EXPECT_FALSE(files_->CopyWholeFile(path, cut));
  EXPECT_FALSE(files_->RenameFile(path, cut));
  EXPECT_FALSE(files_->RenameToNew(path, cut));
  EXPECT_EQ(ContentOf(*files_, path), "kept");
}

TEST_F(FileSystemTest, RemovingRenamingCopying) {
  const std::string a = folder_.Path("a");
  const std::string b = folder_.Path("b");
  ASSERT_TRUE(Write(a, OpenMode::kCreate, "new"));
  ASSERT_TRUE(Write(b, OpenMode::kCreate, "longer and old"));
  EXPECT_TRUE(files_->CopyWholeFile(a, b));
  EXPECT_EQ(ContentOf(*files_, b), "new");
  EXPECT_FALSE(files_->CopyWholeFile(a, a));
  EXPECT_FALSE(files_->CopyWholeFile(folder_.Path("none"), b));
  EXPECT_EQ(ContentOf(*files_, b), "new");
  EXPECT_FALSE(files_->RenameToNew(a, b));
  EXPECT_EQ(ContentOf(*files_, a), "new");
  EXPECT_TRUE(files_->RenameFile(a, b));
  EXPECT_EQ(folder_.Names(), std::vector<std::string>{"b"});
  EXPECT_TRUE(files_->RenameToNew(b, a));
  EXPECT_EQ(folder_.Names(), std::vector<std::string>{"a"});
  EXPECT_TRUE(files_->RenameFile(a, b));
  EXPECT_TRUE(files_->RemoveFile(a));
  EXPECT_TRUE(files_->RemoveFile(folder_.Path("no/such")));
  EXPECT_FALSE(files_->RemoveFile(folder_.Path()));
  EXPECT_TRUE(files_->MakeDirectory(a));
  EXPECT_TRUE(files_->MakeDirectory(a));
  EXPECT_FALSE(files_->MakeDirectory(b));
  EXPECT_FALSE(files_->RemoveEmptyDirectory(folder_.Path()));
}

TEST_F(FileSystemTest, Paths) {
  EXPECT_TRUE(files_->DirectoryExists(files_->TempDirectory()));
  EXPECT_EQ(WithSeparator(*files_, files_->TempDirectory()), files_->TempDirectory());
  EXPECT_EQ(WithSeparator(*files_, ""), "");
  const std::string path = folder_.Path("a name with blanks.text");
  ASSERT_TRUE(Write(path, OpenMode::kCreate, "x"));
  EXPECT_EQ(ContentOf(*files_, files_->ShortPath(path)), "x");
  EXPECT_EQ(files_->FullPath(path), path);
  EXPECT_TRUE(files_->FullPath("a").ends_with(std::string(1, files_->Separator()) + "a"));
}

}  // namespace
}  // namespace quillon
