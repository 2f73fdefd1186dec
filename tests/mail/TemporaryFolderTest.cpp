#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/WholeFile.h"
#include "mail/TemporaryFolder.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

class TemporaryFolderTest : public ::testing::Test {
 protected:
  // A directory with files, as a process that died leaves it.
  void Given(const std::string& directory, const std::vector<std::string>& names) {
    ASSERT_TRUE(files_->MakeDirectory(parent_.Path(directory)));
    for (const auto& name : names) {
      ASSERT_TRUE(WriteWholeFile(*files_, parent_.Path(directory + "/" + name), BytesOf("x")));
    }
  }

  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  TempFolder parent_;
};

TEST_F(TemporaryFolderTest, OnlyWhatIsNobodysIsRemoved) {
  Given("QUILLON.DEAD", {"IN.USE", "1.UUE", "20.ZIP"});
  Given("QUILLON.DEAD/3.dir", {"Report of May.doc"});
  Given("QUILLON.KEPT", {"1.UUE"});                 // or its owner has come no farther yet
  Given("QUILLON.MINE", {"IN.USE", "letter.UUE"});  // somebody put something there
  Given("OTHER", {"IN.USE", "1.UUE"});
  {
    TemporaryFolder living(*files_, parent_.Path(), false);
    const auto file = living.NewFile(".UUE");
    ASSERT_TRUE(WriteWholeFile(*files_, file, BytesOf("x")));
    const auto named = living.NewNamedFile("Report of May.doc");
    EXPECT_EQ(FileNameOf(named), "Report of May.doc");
    ASSERT_TRUE(WriteWholeFile(*files_, named, BytesOf("x")));
    RemoveAbandonedFolders(*files_, parent_.Path());
    EXPECT_TRUE(files_->FileExists(file) && files_->FileExists(named));
  }
  EXPECT_EQ(parent_.Names(), (std::vector<std::string>{"OTHER", "QUILLON.KEPT", "QUILLON.MINE"}));
  EXPECT_TRUE(files_->FileExists(parent_.Path("OTHER/1.UUE")));
  EXPECT_TRUE(files_->FileExists(parent_.Path("QUILLON.KEPT/1.UUE")));
  EXPECT_TRUE(files_->FileExists(parent_.Path("QUILLON.MINE/letter.UUE")));
}

}  // namespace
}  // namespace quillon::testing
