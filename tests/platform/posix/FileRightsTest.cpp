#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "platform/Platform.h"
#include "ports/FileSystem.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

using std::filesystem::perms;

TEST(FileRights, TheModeTellsWhetherOthersCanWrite) {
  const auto files = MakeFileSystem();
  const TempFolder folder;
  const auto openTo = [&](perms others) {
    std::filesystem::permissions(folder.Path(), perms::owner_all | others);
    return files->OthersCanWrite(folder.Path());
  };
  EXPECT_FALSE(openTo(perms::none));
  EXPECT_FALSE(openTo(perms::group_read | perms::others_read | perms::others_exec));
  EXPECT_TRUE(openTo(perms::group_write));
  EXPECT_TRUE(openTo(perms::others_write));
  EXPECT_TRUE(files->OthersCanWrite(folder.Path("missing")));
}

TEST(FileRights, ALinkIsNotListed) {
  const auto files = MakeFileSystem();
  const TempFolder folder;
  std::filesystem::create_directory_symlink(folder.Path(), folder.Path("link"));
  EXPECT_TRUE(files->List(folder.Path(), "").empty());
}

}  // namespace
}  // namespace quillon::testing
