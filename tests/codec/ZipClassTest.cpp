#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "codec/ZipClass.h"
#include "codec/zip/ZipNames.h"
#include "codec/zip/ZipRecords.h"
#include "core/WholeFile.h"
#include "platform/Platform.h"
#include "support/FaultyFileSystem.h"
#include "support/TempFolder.h"
#include "support/ZipReader.h"

namespace quillon {
namespace {

using testing::BytesOf;
using testing::ContentOf;
using testing::FaultyFileSystem;
using testing::ReadZip;
using testing::TempFolder;
using testing::ZippedFile;

constexpr uint16_t kStored = 0;
constexpr uint16_t kDeflated = 8;

// Bytes that cannot be compressed, or, of few values, that can.
std::string SomeBytes(size_t size, unsigned values = 256) {
  std::mt19937 random(static_cast<unsigned>(size));
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() % values);
  return bytes;
}

class ZipClassTest : public ::testing::Test {
 protected:
  ZipClassTest() { zip_.zipFile(archive_); }

  std::string Write(std::string_view name, std::string_view content) {
    std::string path = folder_.Path(name);
    EXPECT_TRUE(WriteWholeFile(*files_, path, BytesOf(content)));
    return path;
  }

  // The archive as it is now.
  std::vector<ZippedFile> Files() { return ReadZip(ContentOf(*files_, archive_), zip_.Password()); }

  void Mend() {
    faulty_.writeBudget = faulty_.readBudget = std::numeric_limits<uint64_t>::max();
    faulty_.closeFails = false;
  }

  void ExpectNothingMade(const char* when) {
    EXPECT_EQ(zip_.zip(), kFalse) << when;
    EXPECT_FALSE(files_->FileExists(archive_)) << when;
    Mend();
  }

  TempFolder folder_;
  const std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  FaultyFileSystem faulty_{*files_};
  const std::string archive_ = folder_.Path("out.zip");
  ZipClass zip_{faulty_};
};

TEST_F(ZipClassTest, FilesOfAllSizesComeOutAsTheyWentIn) {
  const struct {
    std::string content;
    uint16_t method;
  } cases[] = {
      {"", kStored},
      {"a", kStored},
      {SomeBytes(1000), kStored},
      {SomeBytes(1000, 4), kDeflated},
      // Around the size of the blocks that files are read in.
      {SomeBytes(262143), kStored},
      {SomeBytes(262144), kDeflated},
      {SomeBytes(262145), kDeflated},
      {SomeBytes(3000000), kDeflated},
      {SomeBytes(3000000, 3), kDeflated},
      {std::string(2000000, '\0'), kDeflated},
  };
  for (const auto& one : cases) {
    zip_.AddFile(Write("File " + std::to_string(&one - cases), one.content));
  }
  for (const char* const password : {"", "open sesame"}) {
    zip_.Password(password);
    ASSERT_EQ(zip_.zip(), kTrue);
    const std::vector<ZippedFile> files = Files();
    ASSERT_EQ(files.size(), std::size(cases));
    for (size_t i = 0; i < files.size(); ++i) {
      EXPECT_EQ(files[i].name, "File " + std::to_string(i));
      EXPECT_TRUE(files[i].content == cases[i].content) << i;
      EXPECT_EQ(files[i].method, *password == '\0' ? cases[i].method : kDeflated) << i;
      EXPECT_EQ(files[i].flags, *password == '\0' ? 0 : 9);
    }
  }
}

TEST_F(ZipClassTest, EncryptingTwiceGivesNothingToCompare) {
  zip_.AddFile(Write("a", SomeBytes(1000)));
  zip_.Password("p");
  ASSERT_EQ(zip_.zip(), kTrue);
  const std::string first = ContentOf(*files_, archive_);
  ASSERT_EQ(zip_.zip(), kTrue);
  const std::string second = ContentOf(*files_, archive_);
  ASSERT_EQ(first.size(), second.size());
  size_t same = 0;
  for (size_t i = 43; i < 1043; ++i) same += first[i] == second[i] ? 1U : 0U;
  EXPECT_LT(same, 50U);
}

TEST_F(ZipClassTest, NamesLoseTheirDirectoriesAndStayDifferent) {
  const std::pair<const char*, const char*> cases[] = {
      {"C:\\My Files\\a b.txt", "a b.txt"},
      {"/home/me/A B.TXT", "A B (2).TXT"},
      {"a b.txt", "a b (3).txt"},
      {"a b (4).txt", "a b (4).txt"},
      {"a b.txt", "a b (5).txt"},
      {"x.tar.gz", "x.tar.gz"},
      {"y/x.tar.gz", "x.tar (2).gz"},
      {".profile", ".profile"},
      {"y/.profile", ".profile (2)"},
      {"README", "README"},
      {"y/readme", "readme (2)"},
      {"Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x93\x8E.txt",
       "Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x93\x8E.txt"},
      {"Latin-1 \xFC", "Latin-1 \xEF\xBF\xBD"},
      {"\xED\xA0\xBD half", "\xEF\xBF\xBD half"},
      {"half \xED\xB3\x8E", "half \xEF\xBF\xBD"},
  };
  ZipNames names;
  for (const auto& [path, name] : cases) EXPECT_EQ(names.NameFor(path), name);
}

TEST_F(ZipClassTest, OnlyNamesBeyondAsciiAreMarked) {
  zip_.AddFile(Write("plain ~", "x"));
  zip_.AddFile(Write("Gr\xC3\xBC\xC3\x9F", "y"));
  ASSERT_EQ(zip_.zip(), kTrue);
  const std::vector<ZippedFile> files = Files();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].flags, 0);
  EXPECT_EQ(files[1].flags, 1 << 11);
  EXPECT_EQ(files[1].name, "Gr\xC3\xBC\xC3\x9F");
}

TEST_F(ZipClassTest, FilesKeepTheirTimes) {
  const std::string path = Write("a", "x");
  const auto local = files_->Open(path, OpenMode::kRead)->ModificationTime();
  ASSERT_TRUE(local);
  const DosTime expected = ToDosTime(*local);
  zip_.AddFile(path);
  ASSERT_EQ(zip_.zip(), kTrue);
  EXPECT_EQ(Files().at(0).time, expected.time);
  EXPECT_EQ(Files().at(0).date, expected.date);

  const struct {
    LocalTime local;
    unsigned date;
    unsigned time;
  } cases[] = {
      {{2026, 11, 21, 6, 15, 16, 54, 60}, 46 << 9 | 11 << 5 | 21, 15 << 11 | 16 << 5 | 27},
      {{1980, 1, 1, 2, 0, 0, 1, 0}, 1 << 5 | 1, 0},
      {{2107, 12, 31, 6, 23, 59, 60, 0}, 127 << 9 | 12 << 5 | 31, 23 << 11 | 59 << 5 | 29},
      {{1979, 12, 31, 1, 23, 59, 59, 0}, 1 << 5 | 1, 0},
      {{2108, 1, 1, 0, 0, 0, 0, 0}, 127 << 9 | 12 << 5 | 31, 23 << 11 | 59 << 5 | 29},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(ToDosTime(one.local).date, one.date) << one.local.year;
    EXPECT_EQ(ToDosTime(one.local).time, one.time) << one.local.year;
  }
}

TEST_F(ZipClassTest, WhatCannotBePackedLeavesNoArchive) {
  ExpectNothingMade("no files");
  const std::string content = SomeBytes(700000);
  const std::string input = Write("in", content);
  zip_.AddFile(input);
  faulty_.closeFails = true;
  ExpectNothingMade("the last bytes are lost");
  for (const uint64_t readable : {0U, 1U, 262144U, 699999U}) {
    faulty_.readBudget = readable;
    ExpectNothingMade("unreadable");
  }
  zip_.zipFile(folder_.Path("no/such/folder"));
  ExpectNothingMade("no such folder");
  zip_.zipFile("");
  ExpectNothingMade("no name");
  zip_.zipFile(archive_);
  for (const std::string& missing : {folder_.Path("none"), folder_.Path(), std::string()}) {
    zip_.AddFile(missing);
    ExpectNothingMade("missing");
    zip_.Reset();
    zip_.zipFile(archive_);
    zip_.AddFile(input);
  }
  EXPECT_EQ(zip_.zip(), kTrue);
  EXPECT_TRUE(ContentOf(*files_, input) == content);
}

TEST_F(ZipClassTest, AFullDiskIsNoticedWhereverItFillsUp) {
  for (const char* const password : {"", "p"}) {
    zip_.Reset();
    zip_.zipFile(archive_);
    zip_.Password(password);
    zip_.AddFile(Write("a", SomeBytes(900000)));
    zip_.AddFile(Write("b", "x"));
    constexpr uint64_t kPlenty = 10000000;
    faulty_.writeBudget = kPlenty;
    ASSERT_EQ(zip_.zip(), kTrue);
    const uint64_t needed = kPlenty - faulty_.writeBudget;
    Mend();
    ASSERT_TRUE(files_->RemoveFile(archive_));
    for (uint64_t room = 0; room < needed; room += 50000) {
      faulty_.writeBudget = room;
      ExpectNothingMade("full");
    }
    faulty_.writeBudget = needed - 1;
    ExpectNothingMade("one byte short");
  }
}

TEST_F(ZipClassTest, AnInputIsNeverTheArchive) {
  const std::string content = SomeBytes(1000);
  const std::string input = Write("in.zip", content);
  zip_.AddFile(Write("a", "x"));
  zip_.AddFile(input);
  const std::string link = folder_.Path("link");
  std::filesystem::create_hard_link(input, link);
  for (const std::string& path :
       {input,
        folder_.Path("../") + std::filesystem::path(folder_.Path()).filename().string() + "/in.zip",
        link}) {
    zip_.zipFile(path);
    EXPECT_EQ(zip_.zip(), kFalse) << path;
    EXPECT_EQ(ContentOf(*files_, input), content) << path;
  }
}

TEST_F(ZipClassTest, AnOlderArchiveIsReplaced) {
  Write("out.zip", SomeBytes(5000));
  zip_.AddFile(Write("a", "x"));
  ASSERT_EQ(zip_.zip(), kTrue);
  EXPECT_EQ(Files().at(0).content, "x");
}

TEST_F(ZipClassTest, AnArchiveCanBeGivenUpAfterEachStep) {
  for (const size_t size : {700000U, 0U, 1U}) {
    zip_.AddFile(Write("file" + std::to_string(size), SomeBytes(size)));
  }
  size_t steps = 1;
  for (auto work = zip_.Start(); work->Step() == FileEncoder::State::More;) ++steps;
  EXPECT_EQ(steps, 5U);  // three blocks, and one for each small file
  ASSERT_TRUE(files_->RemoveFile(archive_));
  for (size_t done = 1; done < steps; ++done) {
    auto work = zip_.Start();
    for (size_t step = 0; step < done; ++step) {
      EXPECT_EQ(work->Step(), FileEncoder::State::More) << step;
    }
    EXPECT_TRUE(files_->FileExists(archive_));
    work.reset();
    EXPECT_FALSE(files_->FileExists(archive_)) << done;
  }
}

TEST_F(ZipClassTest, ResetForgetsFilesAndPassword) {
  zip_.AddFile(Write("a", "x"));
  zip_.Password("p");
  zip_.Reset();
  EXPECT_EQ(zip_.zipFile(), "");
  zip_.zipFile(archive_);
  zip_.AddFile(Write("b", "y"));
  ASSERT_EQ(zip_.zip(), kTrue);
  const std::vector<ZippedFile> files = Files();
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].content, "y");
  EXPECT_EQ(files[0].flags, 0);
}

}  // namespace
}  // namespace quillon
