// The sample provider of examples/provider, through the same calls as on Windows.
#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "platform/ProviderTable.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

constexpr ProviderGuard kNoFaults{[](void (*function)(void*), void* context) {
                                    function(context);
                                    return true;
                                  },
                                  nullptr};

class SampleProviderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* directory : {"ann", "bob", "ann/old"}) {
      ASSERT_TRUE(files->MakeDirectory(folder.Path(directory)));
    }
    Write("ann/password.txt", "secret\n");
    ASSERT_EQ(provider::kSuccess, sample.Take(&QuillonProviderGetTable));
    ASSERT_EQ(provider::kSuccess, Login("Ann", "secret", ann.session));
    ASSERT_EQ(provider::kSuccess, Login("bob", "", bob.session));
  }

  void Write(const std::string& name, std::string_view content) {
    ASSERT_TRUE(WriteWholeFile(*files, folder.Path(name), BytesOf(content)));
  }
  std::string Content(const std::string& name) { return ContentOf(*files, folder.Path(name)); }

  std::int32_t Login(const std::string& name, const std::string& password, std::int32_t& session) {
    return sample.Login({}, {name, password, folder.Path(), {}}, session);
  }

  std::int32_t Send(const std::string& subject, const std::vector<ProviderParty>& recipients,
                    const std::vector<ProviderFile>& attachments = {}) {
    ProviderMessage sent;
    sent.subject = subject;
    sent.text = "line\r\n\r\n.\r\n\xC3\xA9";
    sent.from = {0, "Bob B.", "bob@sample"};
    sent.recipients = recipients;
    sent.files = attachments;
    sent.receipt = true;
    sent.importance = 1;
    return sample.Send(bob, sent);
  }

  std::vector<ProviderHeader> List(const ProviderCall& call, const ProviderListing& listing) {
    std::vector<ProviderHeader> headers;
    EXPECT_EQ(provider::kSuccess, sample.List(call, listing, [&](ProviderHeader header) {
      headers.push_back(std::move(header));
      return headers.size() < listing.most;
    }));
    return headers;
  }

  // Into files of the names that the attachments have.
  std::int32_t Read(const std::string& id, bool peek = false) {
    return sample.Read(ann, {id, peek, false}, message, [&](const std::string& name) {
      Write(name, "");
      return folder.Path(name);
    });
  }

  std::uint32_t Unread() {
    std::uint32_t count = 99;
    EXPECT_EQ(provider::kSuccess, sample.UnreadCount(ann, {}, count));
    return count;
  }

  TempFolder folder;
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  ProviderTable sample{kNoFaults};
  ProviderCall ann;
  ProviderCall bob;
  ProviderMessage message;
};

TEST_F(SampleProviderTest, WhatIsSentIsReadAsItWas) {
  Write("tmp1", std::string_view("a\0b\r\n", 5));
  Write("tmp2", "");
  const std::vector<ProviderParty> recipients{{provider::kTo, "Ann", "ann@sample"},
                                              {provider::kCc, "Bob", {}},
                                              {provider::kBcc, {}, "bob"}};
  ASSERT_EQ(provider::kSuccess,
            Send("subject\r\nreceipt: no \xE2\x82\xAC", recipients,
                 {{folder.Path("tmp1"), "one.bin"}, {folder.Path("tmp2"), "\xC3\xA9.txt"}}));
  const auto headers = List(ann, {{}, 9});
  ASSERT_EQ(1U, headers.size());
  EXPECT_EQ("subject  receipt: no \xE2\x82\xAC", headers[0].subject);
  EXPECT_EQ("Ann|Bob|Bob B.|bob@sample", headers[0].to + "|" + headers[0].cc + "|" +
                                             headers[0].from.name + "|" + headers[0].from.address);
  EXPECT_EQ(2U, headers[0].fileCount);
  EXPECT_TRUE(headers[0].unread && headers[0].receipt);
  EXPECT_GE(headers[0].date.year, 2020);
  ASSERT_EQ(provider::kSuccess, Read(headers[0].id, true));
  EXPECT_EQ(1U, Unread());
  ASSERT_EQ(provider::kSuccess, Read(headers[0].id));
  EXPECT_EQ(0U, Unread());
  EXPECT_EQ(0U, List(ann, {{}, 9, true}).size());
  EXPECT_EQ("line\r\n\r\n.\r\n\xC3\xA9", message.text);
  ASSERT_EQ(2U, message.recipients.size());  // and nobody in Bcc
  EXPECT_EQ(1, message.importance);
  EXPECT_EQ(std::string("a\0b\r\n", 5), Content("one.bin"));
  EXPECT_EQ("", Content("\xC3\xA9.txt"));
  EXPECT_EQ(1U, List(bob, {{}, 9}).size());  // once, though he is there twice
  EXPECT_EQ(1U, List(bob, {{"Sent"}, 9}).size());
}

TEST_F(SampleProviderTest, MessagesAreMovedAndDeleted) {
  for (const char* subject : {"1", "2", "3"}) Send(subject, {{provider::kTo, "ann", {}}});
  auto headers = List(ann, {{}, 9});
  ASSERT_EQ(3U, headers.size());
  EXPECT_EQ("1", headers[0].subject);
  EXPECT_EQ(2U, List(ann, {{}, 2}).size());
  EXPECT_EQ(3005, sample.Move(ann, headers[0].id, {"none"}));
  EXPECT_EQ(provider::kSuccess, sample.Move(ann, headers[0].id, {"Old"}));
  EXPECT_EQ(3004, sample.Delete(ann, headers[0].id));
  EXPECT_EQ(provider::kSuccess, sample.Delete(ann, headers[1].id));
  EXPECT_EQ(3004, Read(headers[1].id));
  EXPECT_EQ("3", List(ann, {{}, 9})[0].subject);
  EXPECT_EQ("1", List(ann, {{"old"}, 9})[0].subject);
}

TEST_F(SampleProviderTest, FailuresHaveNumbersAndTextsAndLeaveNothing) {
  std::int32_t session = 0;
  EXPECT_EQ(544, Login("", "", session));
  EXPECT_EQ(3001, Login("nobody", "", session));
  EXPECT_EQ("There is no such user: nobody.", sample.ErrorText(3001));
  EXPECT_EQ("The password is wrong.", sample.ErrorText(3002));
  EXPECT_EQ("", sample.ErrorText(3989));
  EXPECT_EQ(3002, Login("ann", "wrong", session));
  EXPECT_EQ(3003, sample.SetSession({999, 0}));
  EXPECT_EQ(provider::kSuccess, sample.SetSession(ann));
  EXPECT_EQ(provider::kNotSupported, sample.GetSession(ann, session));
  // Nothing leads out of the directory, by whatever name.
  for (const char* name : {"..", ".", "../ann", "a/../ann", "C:ann", ""}) {
    EXPECT_EQ(3006, Send("x", {{provider::kTo, name, {}}})) << name;
    EXPECT_EQ(3006, sample.Move(ann, std::string("inbox/") + name, {"old"})) << name;
    EXPECT_EQ(3006, sample.Delete(ann, std::string(name) + "/x")) << name;
  }
  EXPECT_EQ(3001, Send("x", {{provider::kTo, "ann", {}}, {provider::kTo, "nobody", {}}}));
  EXPECT_EQ(3007, Send("x", {{provider::kTo, "ann", {}}}, {{folder.Path("none"), "none"}}));
  EXPECT_EQ(0U, List(ann, {{}, 9}).size());
  EXPECT_EQ(0U, files->List(folder.Path("ann/inbox"), {}).size());
  EXPECT_EQ(provider::kSuccess, sample.Logout(ann));
  EXPECT_EQ(3003, sample.Logout(ann));
}

TEST_F(SampleProviderTest, AddressBooksComeInParts) {
  Write("book.txt", "Carl Example\tcarl@elsewhere\r\n\n*All\tall@here\nNobody\n");
  std::vector<std::string> books;
  ASSERT_EQ(provider::kSuccess, sample.Books(ann, books));
  EXPECT_EQ((std::vector<std::string>{"Book", "Users"}), books);
  const auto part = [&](const char* book, std::uint32_t from, std::uint32_t most) {
    std::vector<ProviderEntry> entries;
    EXPECT_EQ(provider::kSuccess, sample.Entries(ann, {book, from, most}, entries));
    std::string text;
    for (const auto& entry : entries) {
      text += (entry.isGroup ? "*" : "") + entry.name + "|" + entry.address + ";";
    }
    return text;
  };
  EXPECT_EQ("Carl Example|carl@elsewhere;*All|all@here;", part("Book", 0, 2));
  EXPECT_EQ("Nobody|;", part("Book", 2, 2));
  EXPECT_EQ("", part("Book", 3, 2));
  EXPECT_EQ("bob|bob;", part("Users", 1, 9));
  EXPECT_EQ("", part("Users", 9, 9));
  std::vector<ProviderEntry> none;
  EXPECT_EQ(3008, sample.Entries(ann, {"None", 0, 2}, none));
}

}  // namespace
}  // namespace quillon::testing
