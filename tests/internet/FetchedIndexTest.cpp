#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "internet/FetchedIndex.h"
#include "internet/FetchedList.h"
#include "platform/Platform.h"
#include "support/FaultyFileSystem.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

using Ids = std::vector<std::string>;
using namespace std::string_literals;

std::string NumberedId(std::size_t number) {
  return std::to_string(number + 1'000'000);
}

class FetchedIndexTest : public ::testing::Test {
 protected:
  FetchedIndexTest() { EXPECT_TRUE(index_.MakeDirectory()); }

  // The one file that there is, beside the lock.
  std::string IndexFile() const {
    for (const auto& entry : files_->List(folder_.Path("Quillon/Fetched"), "")) {
      if (entry.name != "lock") return folder_.Path("Quillon/Fetched/" + entry.name);
    }
    return {};
  }
  void Overwrite(std::string_view content) {
    ASSERT_TRUE(WriteWholeFile(*files_, IndexFile(), BytesOf(content)));
  }

  TempFolder folder_;
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  FaultyFileSystem disk_{*files_};
  std::unique_ptr<Crypto> crypto_ = MakeCrypto();
  FetchedIndex index_{disk_, *crypto_, folder_.Path()};
};

TEST_F(FetchedIndexTest, EachMailboxHasAFileWhoseNameDoesNotTellWhoseItIs) {
  EXPECT_TRUE(index_.Read("joe@HOST").empty());
  EXPECT_TRUE(index_.Add("joe@HOST", {"b", "a", "b"}));
  EXPECT_TRUE(index_.Read("ann@HOST").empty());
  const auto name = IndexFile();
  EXPECT_EQ(name.find("joe"), std::string::npos);
  EXPECT_EQ(name.find("HOST"), std::string::npos);
  EXPECT_EQ(ContentOf(*files_, name), "a\nb\n");
  // Another process, and this one.
  FetchedIndex other(*files_, *crypto_, folder_.Path());
  EXPECT_TRUE(other.Add("joe@HOST", {"z"}));
  EXPECT_TRUE(index_.Add("joe@HOST", {"c", "a"}));
  EXPECT_TRUE(other.Remove("joe@HOST", {"a", "never"}));
  EXPECT_EQ(index_.Read("joe@HOST"), Ids({"b", "z", "c"}));
  FetchedIndex nowhere(*files_, *crypto_, "");
  EXPECT_FALSE(nowhere.MakeDirectory());
  EXPECT_TRUE(nowhere.Read("joe@HOST").empty());
}

TEST_F(FetchedIndexTest, OneProcessAtATimeChangesFiles) {
  FetchedIndex other(*files_, *crypto_, folder_.Path());
  auto lock = index_.Lock();
  EXPECT_NE(lock, nullptr);
  EXPECT_EQ(other.Lock(), nullptr);
  lock.reset();
  EXPECT_NE(other.Lock(), nullptr);
}

TEST_F(FetchedIndexTest, OnlyWhatTheProtocolAllowsIsKept) {
  const std::string longest(70, '~');
  EXPECT_TRUE(index_.Add("m", {"", "a b", "a\nb", "\x7F", "\xE4", "x\t", "a\0"s, longest + "~"}));
  EXPECT_TRUE(IndexFile().empty());
  EXPECT_TRUE(index_.Add("m", {longest, "!", "a b"}));
  EXPECT_EQ(index_.Read("m"), Ids({"!", longest}));
}

TEST_F(FetchedIndexTest, ADamagedFileCountsAsEmptyAndIsReplaced) {
  const std::string damages[] = {"a\nb",
                                 "a\n\nb\n",
                                 "a\nb c\n",
                                 "a\r\n",
                                 "\xFF\xFE\n",
                                 std::string(20, '\0'),
                                 "\n",
                                 std::string(71, 'x') + "\n",
                                 std::string(FetchedIndex::kMost * 71 + 1, 'x')};
  for (const auto& damage : damages) {
    ASSERT_TRUE(index_.Add("m", {"first"}));
    Overwrite(damage);
    EXPECT_TRUE(index_.Read("m").empty()) << damage.substr(0, 80);
    EXPECT_TRUE(index_.Add("m", {"new"}));
    EXPECT_EQ(index_.Read("m"), Ids({"new"}));
    ASSERT_TRUE(files_->RemoveFile(IndexFile()));
  }
  std::string many;
  for (std::size_t i = 0; i <= FetchedIndex::kMost; ++i) many += "a\n";
  ASSERT_TRUE(index_.Add("m", {"first"}));
  Overwrite(many);
  EXPECT_TRUE(index_.Read("m").empty());
}

TEST_F(FetchedIndexTest, WhatCannotBeReadOrWrittenStays) {
  ASSERT_TRUE(index_.Add("m", {"a", "b"}));
  disk_.readBudget = 1;
  EXPECT_TRUE(index_.Read("m").empty());
  EXPECT_FALSE(index_.Add("m", {"c"}));
  EXPECT_FALSE(index_.Remove("m", {"a"}));
  disk_.readBudget = 1000;
  disk_.writeBudget = 3;
  EXPECT_FALSE(index_.Add("m", {"c"}));
  EXPECT_FALSE(index_.Remove("m", {"a"}));
  disk_.writeBudget = 1000;
  disk_.closeFails = true;
  EXPECT_FALSE(index_.Add("m", {"c"}));
  disk_.closeFails = false;
  EXPECT_EQ(index_.Read("m"), Ids({"a", "b"}));
  EXPECT_EQ(files_->List(folder_.Path("Quillon/Fetched"), "").size(), 1U);
}

TEST_F(FetchedIndexTest, TheOldestAreForgotten) {
  Ids ids;
  ids.reserve(FetchedIndex::kMost);
  for (std::size_t i = 0; i < FetchedIndex::kMost; ++i) ids.push_back(NumberedId(i));
  EXPECT_TRUE(index_.Add("m", ids));
  EXPECT_EQ(index_.Read("m"), ids);
  EXPECT_TRUE(index_.Add("m", {"new1", "new2", NumberedId(0)}));
  const auto kept = index_.Read("m");
  ASSERT_EQ(kept.size(), FetchedIndex::kMost);
  EXPECT_EQ(kept.front(), NumberedId(2));
  EXPECT_EQ(kept.back(), "new2");
  EXPECT_TRUE(index_.Remove("m", kept));
  EXPECT_TRUE(index_.Read("m").empty());
}

TEST(FetchedListTest, TellsWhatIsThereAndWhatIsGone) {
  FetchedList list({"b", "a", "twice", "gone", "a"});
  const auto hear = [&] {
    list.OnBegin();
    list.OnIdentifier(7, "a");
    list.OnIdentifier(3, "twice");
    list.OnIdentifier(4, "twice");
    list.OnIdentifier(2, "other");
    list.OnIdentifier(4'294'967'295U, "b");
  };
  hear();
  EXPECT_FALSE(list.Contains(7));  // until its end nothing is known
  EXPECT_TRUE(list.Gone().empty());
  hear();  // on another connection
  list.OnEnd(false);
  EXPECT_TRUE(list.Gone().empty());
  hear();
  list.OnEnd(true);
  EXPECT_EQ(list.Gone(), Ids({"gone"}));
  for (const auto number : {7U, 4'294'967'295U}) EXPECT_TRUE(list.Contains(number)) << number;
  for (const auto number : {2U, 3U, 4U, 0U, 1U}) EXPECT_FALSE(list.Contains(number)) << number;
}

}  // namespace
}  // namespace quillon::testing
