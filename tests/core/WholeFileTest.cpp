#include <gtest/gtest.h>
#include <optional>

#include "core/WholeFile.h"
#include "platform/Platform.h"
#include "support/FaultyFileSystem.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

using testing::BytesOf;

TEST(WholeFile, AFailedWriteLeavesNoFile) {
  const testing::TempFolder folder;
  const auto files = MakeFileSystem();
  testing::FaultyFileSystem faulty(*files);
  faulty.writeBudget = 2;
  EXPECT_FALSE(WriteWholeFile(faulty, folder.Path("a"), BytesOf("abc")));
  faulty.writeBudget = 100;
  faulty.closeFails = true;
  EXPECT_FALSE(WriteWholeFile(faulty, folder.Path("a"), BytesOf("abc")));
  EXPECT_TRUE(folder.Names().empty());
  faulty.closeFails = false;
  EXPECT_TRUE(WriteWholeFile(faulty, folder.Path("a"), BytesOf("abc")));
  faulty.readBudget = 2;
  EXPECT_EQ(ReadWholeFile(faulty, folder.Path("a")), std::nullopt);
}

TEST(WholeFile, NamesBehindEverySeparator) {
  EXPECT_EQ(FileNameOf("C:\\a/b\\c.d"), "c.d");
  EXPECT_EQ(FileNameOf("C:c"), "c");
  EXPECT_EQ(FileNameOf("c"), "c");
  EXPECT_EQ(FileNameOf("c/"), "");
}

}  // namespace
}  // namespace quillon
