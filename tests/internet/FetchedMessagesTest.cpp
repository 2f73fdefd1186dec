// What the back end notes of fetched messages, and what it leaves out for them.
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "InternetWorld.h"
#include "Peers.h"

namespace quillon::testing {
namespace {

using Ids = std::vector<std::string>;

constexpr const char* kMailbox = "joe@POP.EXAMPLE";

class FetchedMessagesTest : public ::testing::Test {
 protected:
  FetchedMessagesTest() {
    world_.network.accept = [this] { return std::make_shared<MailboxPeer>(mailbox_); };
    mailbox_->messages = {{"u1", "Subject: one\r\n\r\n1\r\n"},
                          {"u2", "Subject: two\r\n\r\n2\r\n"},
                          {"u3", "Subject: three\r\nStatus: R\r\n\r\n3\r\n"}};
    world_.instance.unreadOnly = kTrue;
    world_.instance.access.trackUnread = kTrue;
  }

  std::string Subjects() {
    EXPECT_TRUE(backEnd_.LoadMessageHeaders(world_.request).Succeeded());
    std::string all;
    for (const auto& header : world_.shared.headers) all += header.subject + " ";
    std::int32_t count = 0;
    EXPECT_TRUE(backEnd_.UnreadCount(world_.request, count).Succeeded());
    if (world_.instance.unreadOnly != kFalse) {
      EXPECT_EQ(count, world_.shared.headers.size());
    }
    return all;
  }
  std::int32_t Load(std::int32_t index) {
    world_.instance.messageIndex = index;
    return backEnd_.LoadMessage(world_.request).number;
  }
  void FetchAll() {
    world_.instance.unreadOnly = kFalse;
    Subjects();
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(world_.shared.headers.size()); ++i) {
      EXPECT_EQ(Load(i), kBackEndSuccess);
    }
    world_.instance.unreadOnly = kTrue;
  }
  Ids Fetched() const { return world_.fetched.Read(kMailbox); }

  InternetWorld world_;
  InternetBackEnd& backEnd_ = world_.backEnd;
  std::shared_ptr<MailboxPeer::Mailbox> mailbox_ = std::make_shared<MailboxPeer::Mailbox>();
};

TEST_F(FetchedMessagesTest, ScriptAndConfigurationFileSwitchIt) {
  world_.instance.access.trackUnread.reset();
  FetchAll();
  EXPECT_TRUE(world_.userDirectory.Names().empty());
  EXPECT_EQ(Subjects(), "one two ");
  ASSERT_TRUE(world_.configuration.WriteString("Server pop.example", "TrackUnread", "TRUE"));
  FetchAll();
  EXPECT_EQ(Subjects(), "");
  world_.instance.access.trackUnread = kFalse;
  EXPECT_EQ(Subjects(), "one two ");
}

TEST_F(FetchedMessagesTest, EachAccountHasItsOwn) {
  FetchAll();
  world_.instance.loginName = "ann";
  EXPECT_EQ(Subjects(), "one two ");
  world_.instance.loginName = "joe";
  world_.shared.internet.popPort = 1110;
  world_.instance.postOffice = "POP.example";
  EXPECT_EQ(Subjects(), "");
}

// Numbers are of a session, identifiers are not; and other processes fetch as well.
TEST_F(FetchedMessagesTest, ItHoldsForLaterSessionsAndForgetsWhatIsGone) {
  FetchAll();
  backEnd_.Logout(world_.request);
  mailbox_->messages.erase(mailbox_->messages.begin());
  mailbox_->messages.push_back({"u4", "Subject: four\r\n\r\n4\r\n"});
  mailbox_->messages.push_back({"u5", "Subject: five\r\n\r\n5\r\n"});
  ASSERT_TRUE(world_.fetched.Add(kMailbox, {"u5"}));
  EXPECT_EQ(Subjects(), "four ");
  EXPECT_EQ(Fetched(), Ids({"u2", "u3", "u5"}));
  // What is deleted in this session may be there in the next one.
  EXPECT_EQ(Load(0), kBackEndSuccess);
  EXPECT_TRUE(backEnd_.DeleteMessage(world_.request).Succeeded());
  EXPECT_EQ(Subjects(), "");
  EXPECT_EQ(Fetched(), Ids({"u2", "u3", "u5", "u4"}));
  backEnd_.Logout(world_.request);
  EXPECT_EQ(Subjects(), "");
  EXPECT_EQ(Fetched(), Ids({"u2", "u3", "u5"}));
}

TEST_F(FetchedMessagesTest, OneHeaderIsLeftOutAsWell) {
  FetchAll();
  mailbox_->messages[1].identifier = "other";
  backEnd_.Logout(world_.request);
  for (const auto& [number, subjects] : {std::pair{1, ""}, {2, "two "}, {3, ""}}) {
    world_.shared.switches.singleHeader = number;
    EXPECT_TRUE(backEnd_.LoadMessageHeaders(world_.request).Succeeded());
    std::string all;
    for (const auto& header : world_.shared.headers) all += header.subject + " ";
    EXPECT_EQ(all, subjects) << number;
  }
  EXPECT_EQ(Fetched().size(), 3U);
}

TEST_F(FetchedMessagesTest, WhatDidNotArriveIsNotNoted) {
  Subjects();
  using Trouble = MailboxPeer::Trouble;
  for (const auto trouble : {Trouble::Refuses, Trouble::HangsUp, Trouble::FallsSilent}) {
    for (const char* const command : {"RETR", "UIDL 1"}) {
      mailbox_->trouble = trouble;
      mailbox_->troubleAt = command;
      Timer abort(world_.network, [&] { backEnd_.AsynchAbort(); });
      abort.Start(5000);
      std::int32_t number = 0;
      const auto code = CodeOf([&] { number = Load(0); });
      const bool isFine = trouble == Trouble::Refuses && command == std::string("UIDL 1");
      EXPECT_EQ(code == 0 && number == kBackEndSuccess, isFine) << command;
      mailbox_->trouble = Trouble::None;
      backEnd_.Logout(world_.request);
      EXPECT_EQ(Subjects(), "one two ");
    }
  }
  mailbox_->messages[0].text = "Content-Type: a/b; name=a.bin\r\n\r\nfile\r\n";
  backEnd_.Logout(world_.request);
  EXPECT_EQ(Subjects(), " two ");
  world_.disk.writeBudget = 0;
  EXPECT_EQ(Load(0), 26);
  EXPECT_TRUE(world_.userDirectory.Names().empty());
  world_.disk.writeBudget = 100;
  EXPECT_EQ(Load(0), kBackEndSuccess);
  EXPECT_EQ(Fetched(), Ids({"u1"}));
}

TEST_F(FetchedMessagesTest, NoIdentifierIsTakenThatTheProtocolDoesNotKnow) {
  for (const auto* const text : {"a b", "", "\xE4", "\x01", "9"}) {
    mailbox_->messages[0].identifier = text;
    mailbox_->messages[1].identifier = std::string(71, 'x');
    FetchAll();
    backEnd_.Logout(world_.request);
  }
  EXPECT_EQ(Fetched(), Ids({"u3", "9"}));
}

TEST_F(FetchedMessagesTest, AMessageIsLoadedThoughItCannotBeNoted) {
  const auto log = [&] {
    world_.log.Stop();
    return ContentOf(*world_.files, world_.folder.Path("POPDUMP.TXT"))
               .find("could not be noted as fetched") != std::string::npos;
  };
  Subjects();
  world_.log.Start();
  world_.disk.writeBudget = 0;
  EXPECT_EQ(Load(0), kBackEndSuccess);
  world_.disk.writeBudget = 100'000;
  EXPECT_TRUE(log());
  // Another process has the files, for longer than one needs them, or not so long.
  auto lock = world_.fetched.Lock();
  world_.log.Start();
  EXPECT_EQ(Load(0), kBackEndSuccess);
  EXPECT_EQ(world_.shared.message.subject, "one");
  EXPECT_TRUE(log());
  EXPECT_TRUE(Fetched().empty());
  Timer unlock(world_.network, [&] { lock.reset(); });
  unlock.Start(60);
  world_.log.Start();
  EXPECT_EQ(Load(1), kBackEndSuccess);
  EXPECT_FALSE(log());
  EXPECT_EQ(Fetched(), Ids({"u2"}));
  // Whoever aborts the waiting gets no message.
  lock = world_.fetched.Lock();
  Timer abort(world_.network, [&] { backEnd_.AsynchAbort(); });
  abort.Start(60);
  EXPECT_EQ(CodeOf([&] { Load(0); }), 522);
  EXPECT_EQ(world_.shared.message.subject, "two");
  lock.reset();
  // Where the directory cannot be there is a file.
  InternetWorld other;
  ASSERT_TRUE(WriteWholeFile(*other.files, other.userDirectory.Path("Quillon"), BytesOf("x")));
  other.network.accept = world_.network.accept;
  other.instance.access.trackUnread = kTrue;
  EXPECT_TRUE(other.backEnd.LoadMessageHeaders(other.request).Succeeded());
  EXPECT_TRUE(other.backEnd.LoadMessage(other.request).Succeeded());
}

TEST_F(FetchedMessagesTest, AMessageInSeveralPartsIsFetchedWithAllOfThem) {
  const auto part = [](const std::string& number) {
    return "Subject: part\r\nContent-Type: message/partial; id=a; total=2; number=" + number +
           "\r\n\r\nSubject: whole\r\n\r\n" + number + "\r\n";
  };
  mailbox_->messages = {{"p2", part("2")}, {"p1", part("1")}, {"u", "Subject: other\r\n\r\n"}};
  world_.instance.access.expandTnef = kTrue;
  Subjects();
  mailbox_->trouble = MailboxPeer::Trouble::Refuses;
  mailbox_->troubleAt = "RETR 1";
  EXPECT_EQ(Load(1), kBackEndSuccess);  // alone, without the other
  EXPECT_EQ(Fetched(), Ids({"p1"}));
  mailbox_->trouble = MailboxPeer::Trouble::None;
  EXPECT_EQ(Load(0), kBackEndSuccess);
  EXPECT_EQ(world_.shared.message.subject, "whole");
  EXPECT_EQ(Subjects(), "other ");
}

}  // namespace
}  // namespace quillon::testing
