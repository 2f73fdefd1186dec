// The desk's store: what one face puts in, another finds, whole.
#include <algorithm>
#include <atomic>
#include <future>
#include <gtest/gtest.h>

#include "desk/Store.h"
#include "support/TempFolder.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

class StoreTest : public testing::Test {
 protected:
  StoreTest() : place_(folder_.Path("store")), store_(place_) {}

  fs::path File(const std::string& name, const std::string& bytes) {
    ReplaceBytes(place_ / name, bytes);
    return place_ / name;
  }
  std::vector<Message> In(const std::string& mailbox, const std::string& folder) {
    std::vector<Message> messages;
    const Folder root = store_->Root(mailbox);
    const Folder place = folder.empty() ? root : store_->Subfolder(root, folder).value();
    for (const std::string& id : store_->MessageIds(place)) {
      messages.push_back(store_->Read(mailbox, id).value());
    }
    return messages;
  }

  quillon::testing::TempFolder folder_;
  const fs::path place_;
  std::optional<Store> store_;
};

Message Strange(const std::vector<fs::path>& files) {
  Message message;
  message.subject = "two\nlines, a\ttab, \\n and \xC3\xA9";
  message.text = std::string("first\r\n\r\nsubject: no\0field\n", 27);
  message.conversationIndex = "01ABCD";
  message.richText = "{\\rtf1 bold}";
  message.importance = 2;
  message.sensitivity = 3;
  message.receipt = true;
  message.recipients = {{1, "Bob Baker", ""},
                        {2, "x\ty", "SMTP:Ann@DESK.example"},
                        {3, "Stranger", "SMTP:s@outside.example"}};
  for (const fs::path& file : files) message.attachments.push_back({"na\tme.txt", file, 5, 1, ""});
  message.fields = {{"0x0C08000B", "True", 11}, {"X Y", "a\nb", 8}};
  return message;
}

// Everything of a message that is not an identifier, as one text.
std::string Told(const Message& message) {
  std::string text = message.subject + "|" + message.text + "|" + message.messageClass + "|" +
                     message.conversationIndex + "|" + message.richText + "|" +
                     std::to_string(message.importance) + std::to_string(message.sensitivity) +
                     (message.receipt ? "receipt" : "");
  for (const Recipient& each : message.recipients) {
    text += "|" + std::to_string(each.recipientClass) + each.name + "<" + each.address;
  }
  for (const Attachment& each : message.attachments) {
    text += "|" + each.name + std::to_string(each.position) + ReadBytes(each.path).value_or("none");
  }
  for (const Field& each : message.fields) {
    text += "|" + each.name + std::to_string(each.type) + each.value;
  }
  return text;
}

TEST_F(StoreTest, KeepsEveryByteOfAMessage) {
  const std::string bytes("\0\r\n\xFF", 4);
  const Message message = Strange({File("one", bytes), File("two", "")});
  const Folder outbox = store_->KnownFolder("ann", kOutbox);
  const std::string id = store_->Add(outbox, message);
  Store other(place_);
  EXPECT_EQ(Told(message), Told(other.Read("ann", id).value()));
  EXPECT_FALSE(other.Read("bob", id));

  Message changed = other.Read("ann", id).value();
  std::reverse(changed.attachments.begin(), changed.attachments.end());
  changed.attachments.pop_back();
  changed.attachments.push_back({"third", File("three", "3"), -1, 1, ""});
  changed.richText.clear();
  const std::string wanted = Told(changed);
  ASSERT_TRUE(other.Change("ann", changed));
  EXPECT_EQ(wanted, Told(store_->Read("ann", id).value()));
}

TEST_F(StoreTest, DeliversToAccountsAndLeavesTheRestOutside) {
  const Message message = Strange({File("one", "1")});
  const Account ann = store_->FindAccount("").value();
  EXPECT_EQ("ann", ann.profile);
  store_->Send(ann, message);
  for (const char* mailbox : {"ann", "bob"}) {
    const std::vector<Message> inbox = In(mailbox, kInbox);
    ASSERT_EQ(1U, inbox.size()) << mailbox;
    EXPECT_TRUE(inbox[0].unread);
    EXPECT_EQ("Ann Archer", inbox[0].senderName);
    EXPECT_EQ(2U, inbox[0].recipients.size()) << "a blind copy is told to nobody";
    EXPECT_EQ("1", ReadBytes(inbox[0].attachments.at(0).path));
  }
  ASSERT_EQ(1U, In("ann", kSentItems).size());
  EXPECT_FALSE(In("ann", kSentItems)[0].unread);
  EXPECT_EQ(1U, In(kOutside, "").size());
  EXPECT_TRUE(fs::is_empty(place_ / "making"));
}

TEST_F(StoreTest, ADraftThatIsSentLeavesItsFolder) {
  Message draft;
  draft.recipients = {{1, "bob", ""}};
  draft.id = store_->Add(store_->KnownFolder("ann", kOutbox), draft);
  store_->Send(store_->FindAccount("ann").value(), draft, false);
  EXPECT_TRUE(In("ann", kOutbox).empty());
  EXPECT_TRUE(In("ann", kSentItems).empty());
  EXPECT_TRUE(In(kOutside, "").empty());
  EXPECT_EQ(1U, In("bob", kInbox).size());
}

TEST_F(StoreTest, AFileThatCannotBeReadLeavesNoHalfMessage) {
  const Message message = Strange({place_ / "none"});
  EXPECT_ANY_THROW(store_->Send(store_->FindAccount("ann").value(), message));
  EXPECT_TRUE(In("bob", kInbox).empty());
  EXPECT_TRUE(fs::is_empty(place_ / "making"));
}

TEST_F(StoreTest, FoldersMoveAndAreCopiedWithTheirContents) {
  const Folder inbox = store_->KnownFolder("ann", kInbox);
  const Folder work = store_->AddFolder(inbox, "Work/1: now");
  const Folder deep = store_->AddFolder(work, "CON");
  const std::string id = store_->Add(deep, Message());
  EXPECT_THROW(store_->AddFolder(inbox, "WORK/1: NOW"), StoreError);
  EXPECT_THROW(store_->MoveFolder(work, deep), StoreError);
  EXPECT_THROW(store_->CopyFolder(work, deep), StoreError);

  const Folder moved = store_->MoveFolder(work, store_->Root("ann"), "Done");
  EXPECT_EQ(work.id, moved.id);
  EXPECT_EQ(deep.id, store_->Read("ann", id).value().folderId) << "found where it is now";
  const Folder copy = store_->CopyFolder(moved, inbox);
  const Folder deepCopy = store_->Subfolder(copy, "con").value();
  ASSERT_EQ(1U, store_->MessageIds(deepCopy).size());
  EXPECT_NE(id, store_->MessageIds(deepCopy)[0]);

  EXPECT_EQ("Renamed", store_->RenameFolder(moved, "Renamed").name);
  store_->RemoveFolder(moved);
  EXPECT_FALSE(store_->Read("ann", id));
  EXPECT_FALSE(store_->FindFolder("ann", deep.id));
}

TEST_F(StoreTest, AFolderInThePlaceOfARemovedOneIsAnother) {
  for (int round = 0; round < 2; ++round) {
    const Folder folder = store_->AddFolder(store_->Root("ann"), "Ideas");
    const std::string id = store_->Add(folder, Message());
    EXPECT_EQ(folder.id, store_->Read("ann", id).value().folderId);
    store_->RemoveFolder(folder);
  }
}

TEST_F(StoreTest, MessagesMoveAndGo) {
  const Folder inbox = store_->KnownFolder("bob", kInbox);
  const std::string first = store_->Add(inbox, Message());
  const std::string second = store_->Add(inbox, Message());
  EXPECT_EQ((std::vector{first, second}), store_->MessageIds(inbox)) << "oldest first";
  const Folder deleted = store_->KnownFolder("bob", kDeletedItems);
  EXPECT_TRUE(store_->Move("bob", first, deleted));
  EXPECT_EQ(deleted.id, store_->Read("bob", first).value().folderId);
  EXPECT_TRUE(store_->Remove("bob", first));
  EXPECT_FALSE(store_->Remove("bob", first));
  for (const char* none : {"", "..", "../..", "00", "x"}) EXPECT_FALSE(store_->Read("bob", none));
}

TEST_F(StoreTest, SeveralProgramsUseItAtOnce) {
  constexpr int kEach = 40;
  const fs::path file = File("one", std::string(5000, 'x'));
  std::atomic<int> sending = 2;
  const auto send = [&](const char* profile) {
    Store own(place_);
    Message message;
    message.recipients = {{1, "bob", ""}};
    message.attachments = {{"one", file, -1, 1, ""}};
    for (int i = 0; i < kEach; ++i) own.Send(own.FindAccount(profile).value(), message);
    --sending;
  };
  const auto ann = std::async(std::launch::async, send, "ann");
  const auto bob = std::async(std::launch::async, send, "bob");
  const Folder inbox = store_->KnownFolder("bob", kInbox);
  int taken = 0;
  while (sending > 0 || !store_->MessageIds(inbox).empty()) {
    for (const std::string& id : store_->MessageIds(inbox)) {
      std::optional<Message> message = store_->Read("bob", id);
      ASSERT_TRUE(message) << "nobody else takes it";
      ASSERT_EQ(5000U, ReadBytes(message->attachments.at(0).path).value().size()) << "half of it";
      message->unread = false;
      ASSERT_TRUE(store_->Change("bob", *message));
      ASSERT_TRUE(store_->Remove("bob", id));
      ++taken;
    }
  }
  EXPECT_EQ(2 * kEach, taken);
  EXPECT_EQ(static_cast<std::size_t>(kEach), In("ann", kSentItems).size());
  EXPECT_TRUE(fs::is_empty(place_ / "making"));
}

TEST_F(StoreTest, ResolvesNames) {
  const auto names = [&](const char* text) {
    std::string found;
    for (const Entry& entry : store_->Resolve(text))
      found += entry.name + "<" + entry.address + ">";
    return found;
  };
  EXPECT_EQ("Bob Baker<SMTP:bob@desk.example>", names(" bob "));
  EXPECT_EQ(names("bob"), names("BOB@desk.example"));
  EXPECT_EQ(names("bob"), names("smtp:bob@desk.example"));
  EXPECT_EQ("Sam Smith<SMTP:sam.smith@elsewhere.example>", names("sam smith"))
      << "the whole name, though another one begins so";
  EXPECT_EQ(3U, store_->Resolve("sam").size());
  EXPECT_EQ("new@x.example<SMTP:new@x.example>", names("new@x.example"));
  EXPECT_EQ("FAX:12<FAX:12>", names("FAX:12"));
  EXPECT_EQ("", names("Nobody"));
  EXPECT_EQ("", names("  "));
}

TEST_F(StoreTest, CallsFailAsTheFileSays) {
  File("faults.txt", "# of a test\r\nRead 3\r\nSend#2  0x80040605 \nAdd nothing\nQuiet\n");
  EXPECT_EQ("3", store_->Call("Read", "id=1"));
  EXPECT_EQ("3", store_->Call("Read", ""));
  EXPECT_FALSE(store_->Call("Send", "a\nb"));
  EXPECT_EQ("0x80040605", store_->Call("Send", ""));
  EXPECT_FALSE(store_->Call("Send", ""));
  EXPECT_EQ("nothing", store_->Call("Add", ""));
  EXPECT_EQ("", store_->Word("Quiet"));
  EXPECT_EQ("Read id=1\nRead\nSend a\\nb\nSend\nSend\nAdd\n", ReadBytes(place_ / "calls.txt"));
  EXPECT_FALSE(store_->Dialog());
}

}  // namespace
}  // namespace desk
