#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "InternetWorld.h"
#include "Peers.h"
#include "internet/PartialMessage.h"

namespace quillon::testing {
namespace {

using namespace std::string_literals;

std::string PartOf(const std::string& parameters, const std::string& content) {
  return "From: outer\r\nSubject: part\r\nContent-Type: Message/Partial;\r\n " + parameters +
         "\r\nX-Own: 1\r\n folded\r\nMIME-Version: 1.0\r\n\r\n" + content;
}

class PartialMessageTest : public ::testing::Test {
 protected:
  PartialMessageTest() {
    world_.network.accept = [this] { return std::make_shared<MailboxPeer>(mailbox_); };
    world_.instance.access.expandTnef = kTrue;
    mailbox_->messages = {
        {"3", PartOf("id=a@b; number=3; total=3", "three\r\n--b--\r\n")},
        {"0", "Subject: other\r\n\r\nother\r\n"},
        {"1", PartOf("number=1;id=\"a@b\"",
                     "Subject: whole\r\nFrom: inner\r\nMessage-ID: <m>\r\nX-Inner: 1\r\n"
                     "Content-Type: multipart/mixed;\r\n boundary=b\r\n\r\n"
                     "--b\r\n\r\none\r\n--b\r\nContent-Type: a/b; name=f.bin\r\n\r\nf\r\n")},
        {"2", PartOf("id=a@b; number=2", "\r\ntwo: \r\n")}};
  }

  // What is loaded for each of the headers.
  std::vector<std::string> Load() {
    std::vector<std::string> loaded;
    EXPECT_TRUE(backEnd_.LoadMessageHeaders(world_.request).Succeeded());
    for (std::size_t i = 0; i < world_.shared.headers.size(); ++i) {
      loaded.push_back(LoadOne(i));
    }
    return loaded;
  }
  std::string LoadOne(std::size_t index) {
    world_.instance.messageIndex = static_cast<std::int32_t>(index);
    const auto number = backEnd_.LoadMessage(world_.request).number;
    if (number != -1) return std::to_string(number);
    const auto& message = world_.shared.message;
    auto text = message.subject + "|" + message.from + "|" + message.body;
    for (const auto& file : message.attachments) {
      text += "|" + ContentOf(*world_.files, file.file);
      EXPECT_TRUE(world_.files->RemoveFile(file.file));
    }
    EXPECT_TRUE(world_.received.Names().empty());
    return text;
  }

  InternetWorld world_;
  InternetBackEnd& backEnd_ = world_.backEnd;
  std::shared_ptr<MailboxPeer::Mailbox> mailbox_ = std::make_shared<MailboxPeer::Mailbox>();
  const std::string whole_ = "whole|outer|one|f\r\n\r\ntwo: \r\nthree";
};

TEST_F(PartialMessageTest, AnyPartLoadsTheWhole) {
  const std::vector<std::string> expected = {whole_, "other||other\r\n", whole_, whole_};
  EXPECT_EQ(Load(), expected);
  EXPECT_EQ(world_.shared.message.rawHeaders,
            "From: outer\r\nX-Own: 1\r\n folded\r\nSubject: whole\r\nMessage-ID: <m>\r\n"
            "Content-Type: multipart/mixed;\r\n boundary=b\r\n");
  world_.instance.access.expandTnef = kFalse;
  EXPECT_TRUE(LoadOne(2).starts_with("part|outer||Subject: whole")) << LoadOne(2);
}

TEST_F(PartialMessageTest, WithoutAllPartsEachStaysAsItIs) {
  const auto second = "part|outer||\r\ntwo: \r\n"s;
  const std::string parameters[] = {"id=a@b; number=3; total=4",    "id=a@b; number=3; total=2",
                                    "id=a@b; number=3; total=1000", "id=a@b; number=3",
                                    "id=b@b; number=3; total=3",    "number=3; total=3",
                                    "id=a@b; number=-3; total=3",   "id=a@b; number=3; total=x"};
  const auto good = mailbox_->messages[0].text;
  for (const auto& text : parameters) {
    mailbox_->messages[0].text = PartOf(text, "three\r\n");
    backEnd_.Logout(world_.request);
    EXPECT_EQ(Load().back(), second) << text;
  }
  mailbox_->messages[0].text = good;
  backEnd_.Logout(world_.request);
  EXPECT_EQ(Load().back(), whole_);
  world_.instance.messageIndex = 0;
  EXPECT_TRUE(backEnd_.DeleteMessage(world_.request).Succeeded());
  EXPECT_EQ(LoadOne(3), second);  // one that is listed is gone
  EXPECT_EQ(LoadOne(0), "21");
}

}  // namespace
}  // namespace quillon::testing
