// Folders of Active Messaging and their paths.
#include <gtest/gtest.h>

#include "ActiveMessagingWorld.h"
#include "backends/FolderPath.h"

namespace quillon::testing {
namespace {

using Lines = std::vector<std::string>;

TEST(FolderPathTest, DelimitersPartNames) {
  const struct {
    const char* path;
    const char* delimiter;
    const char* names;  // joined by "|"; "-" for a path that is none
  } kCases[] = {
      {"", "\\\\", ""},
      {"A", "\\\\", "A"},
      {"A\\\\B", "\\\\", "A|B"},
      {"A\\B\\C", "\\\\", "A|B|C"},
      {"\\\\A\\B\\\\", "\\\\", "A|B"},
      {"A\\\\\\\\B", "\\\\", "-"},
      {"A\\\\\\B", "\\\\", "-"},
      {"\\\\", "\\\\", ""},
      {"A\\B/C", "/", "A\\B|C"},
      {"A//B", "/", "-"},
      {"/A/", "/", "A"},
      {"/", "/", ""},
      {"//", "/", ""},
      {"///", "/", "-"},
      {"A::B:C", "::", "A|B:C"},
      {"A/B", "", "A/B"},
  };
  for (const auto& test : kCases) {
    const auto names = SplitFolderPath(test.path, test.delimiter);
    EXPECT_EQ(names ? Join(*names, "|") : "-", test.names) << test.path << " " << test.delimiter;
  }
}

class ActiveMessagingFolderTest : public ::testing::Test {
 protected:
  ActiveMessagingFolderTest() {
    program.AddFolder(program.AddFolder(*program.inbox, "Orders"), "2025");
    program.AddFolder(program.AddStore("Archive"), "Old");
    world.instance.folderDelimiter = "/";
  }

  std::int32_t Create(const std::string& path) {
    return backEnd.CreateFolder(world.request, path).number;
  }
  std::int32_t Delete(const std::string& path) {
    return backEnd.DeleteFolder(world.request, path).number;
  }
  std::int32_t Copy(const std::string& from, const std::string& to, bool subfolders) {
    return backEnd.CopyFolder(world.request, from, to, subfolders).number;
  }
  // "yes", "no" or the number of a failure.
  std::string Exists(const std::string& path) {
    bool exists = true;
    const auto result = backEnd.FolderExists(world.request, path, exists);
    if (!result.Succeeded()) return std::to_string(result.number);
    return exists ? "yes" : "no";
  }
  Lines List(const std::string& parent, bool paths, bool all) {
    Lines folders{"left over"};
    const auto result = backEnd.GetFolderList(world.request, parent, paths, all, folders);
    if (!result.Succeeded()) return {std::to_string(result.number)};
    return folders;
  }
  const std::string& LastBox() { return world.messageBox.shown.back(); }

  ActiveMessagingWorld world;
  FakeMessaging& program = world.program;
  ActiveMessagingBackEnd& backEnd = world.backEnd;
};

TEST_F(ActiveMessagingFolderTest, FoldersAreFoundByTheirPaths) {
  EXPECT_EQ(Exists("inbox/ORDERS/2025"), "yes");
  EXPECT_EQ(TextOf(backEnd.FolderObject()->Get("Name")), "2025");
  EXPECT_EQ(Exists("Mailbox - Joe/Inbox"), "yes");
  EXPECT_EQ(Exists("Archive"), "yes");
  EXPECT_EQ(Exists("Archive/Old/Older"), "no");
  EXPECT_EQ(backEnd.FolderObject(), nullptr);
  EXPECT_EQ(Exists("Old"), "no");  // of another store
  // A session whose inbox has another name in the store.
  program.inbox->properties["Name"] = "Posteingang";
  EXPECT_EQ(Exists("INBOX/Orders"), "yes");
  for (const auto* const path : {"", "/", "Archive//Old"}) EXPECT_EQ(Exists(path), "50") << path;
  program.record.failing["Session.GetInfoStore"] = static_cast<std::int32_t>(0x80040115U);
  EXPECT_EQ(Exists("Orders"), "23");
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error getting folder object - Orders: {23} Network "
            "failure.");
}

TEST_F(ActiveMessagingFolderTest, FoldersAreMadeBelowThoseThatExist) {
  EXPECT_EQ(Create("Archive/Old/1999"), kBackEndSuccess);
  EXPECT_EQ(Exists("Archive/Old/1999"), "yes");
  EXPECT_EQ(Create("Top"), kBackEndSuccess);
  EXPECT_EQ(program.FolderNames(*program.root), (Lines{"Inbox", "Outbox", "Top"}));
  EXPECT_EQ(Create("Archive/None/Deep"), 170);
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error creating folder - Archive/None/Deep: {170} Folder "
            "does not exist.");
  EXPECT_EQ(Create("archive/old"), 108);
  EXPECT_EQ(Create("Archive"), 108);
  EXPECT_EQ(Create("A//B"), 50);
  EXPECT_EQ(LastBox(), "ActiveMessaging Mail Error|Bad folder name.: {50} Bad folder name.");
  program.record.failing["Folder.Update"] = static_cast<std::int32_t>(0x8004010DU);
  EXPECT_EQ(Create("Full"), 136);
  EXPECT_EQ(Exists("Full"), "no");
}

TEST_F(ActiveMessagingFolderTest, FoldersAreDeletedButNotStores) {
  EXPECT_EQ(Delete("Inbox/Orders"), kBackEndSuccess);
  EXPECT_EQ(Exists("Inbox/Orders"), "no");
  EXPECT_EQ(Delete("Inbox/Orders"), 170);
  for (const auto* const path : {"Archive", "inbox", "", "/"}) EXPECT_EQ(Delete(path), 50) << path;
  EXPECT_EQ(Exists("Archive/Old"), "yes");
  program.record.failing["Folder.Delete"] = static_cast<std::int32_t>(0x80040609U);
  EXPECT_EQ(Delete("Archive/Old"), 118);
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error deleting folder - Archive/Old: {118} Cannot "
            "complete, folders exist.");
}

TEST_F(ActiveMessagingFolderTest, FoldersAreCopiedIntoOthers) {
  EXPECT_EQ(Copy("Inbox/Orders", "Archive", false), kBackEndSuccess);
  EXPECT_EQ(Exists("Archive/Orders"), "yes");
  EXPECT_EQ(Exists("Archive/Orders/2025"), "no");
  EXPECT_EQ(Copy("Inbox/Orders", "Archive/Old", true), kBackEndSuccess);
  EXPECT_EQ(Exists("Archive/Old/Orders/2025"), "yes");
  EXPECT_EQ(Copy("None", "Archive", true), 170);
  EXPECT_EQ(Copy("Inbox/Orders", "None", true), 50);
  EXPECT_EQ(Copy("Inbox/Orders", "", true), 50);
  program.record.failing["Folder.CopyTo"] = static_cast<std::int32_t>(0x8004060BU);
  EXPECT_EQ(Copy("Inbox", "Inbox/Orders", true), 117);
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error copying folder - Inbox: {117} Folder cycle error.");
}

TEST_F(ActiveMessagingFolderTest, ListsHoldNamesOrPathsOfOneLevelOrAll) {
  EXPECT_EQ(List("", false, false), (Lines{"Inbox", "Outbox"}));
  EXPECT_EQ(List("", true, false), (Lines{"Mailbox - Joe/Inbox", "Mailbox - Joe/Outbox"}));
  EXPECT_EQ(List("", false, true), (Lines{"Inbox", "Orders", "2025", "Outbox"}));
  EXPECT_EQ(List("INBOX", true, true),
            (Lines{"Mailbox - Joe/Inbox/Orders", "Mailbox - Joe/Inbox/Orders/2025"}));
  EXPECT_EQ(List("archive", true, false), (Lines{"Archive/Old"}));
  EXPECT_EQ(List("/", true, false), (Lines{"Mailbox - Joe", "Archive"}));
  EXPECT_EQ(
      List("/", true, true),
      (Lines{"Mailbox - Joe", "Mailbox - Joe/Inbox", "Mailbox - Joe/Inbox/Orders",
             "Mailbox - Joe/Inbox/Orders/2025", "Mailbox - Joe/Outbox", "Archive", "Archive/Old"}));
  for (const auto& path : List("/", true, true)) EXPECT_EQ(Exists(path), "yes") << path;
  EXPECT_EQ(List("Archive/Old", true, true), Lines{});
  EXPECT_EQ(List("None", true, true), Lines{"170"});
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error accessing folder list - None: {170} Folder does not "
            "exist.");
  EXPECT_EQ(List("A//B", true, true), Lines{"50"});
}

TEST_F(ActiveMessagingFolderTest, ATreeThatLeadsIntoItselfHasAnEnd) {
  auto& folders = FakeMessaging::Part(*program.inbox, "Folders");
  folders.items.clear();
  folders.items.push_back(
      std::dynamic_pointer_cast<RecordingObject>(ObjectOf(program.inbox->methods["Self"]({}))));
  EXPECT_EQ(List("Inbox", false, true).size(), 98U);
  folders.endless = true;
  EXPECT_EQ(Exists("Inbox/None"), "no");
  EXPECT_EQ(List("Inbox", false, false).size(), 65536U);
  folders.items.clear();  // objects that hold each other are never freed
}

}  // namespace
}  // namespace quillon::testing
