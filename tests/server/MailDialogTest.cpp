#include <gtest/gtest.h>

#include "mail/AddressBooks.h"
#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

using Answer = MailDialog::Answer;

constexpr MailSystemId kVinesSystem = 20;
constexpr std::int32_t kClosedNumber = 7;

// A mail system with a window for writing and one for addresses.
class WindowedBackEnd final : public BackEnd, public AddressBooks {
 public:
  MailResult Send(MailRequest& request) override {
    sent.push_back(request.shared.message);
    if (during) during();
    return result;
  }
  std::optional<std::int32_t> NumberOfCancelledDialog() const override { return closed; }
  AddressBooks* Books() override { return this; }

  MailResult Names(MailRequest&, std::vector<std::string>&) override { return {}; }
  MailResult Open(MailRequest&, const std::string&, std::unique_ptr<OpenAddressBook>&) override {
    return {};
  }
  bool HasWindow() const override { return true; }
  MailResult Show(MailRequest& request, AddressChoice& choice) override {
    owner = request.shared.ownerWindow;
    if (cancelled) throw ServerError(error_code::kUserAborted);
    choice.cc = std::move(choice.to);
    choice.to = {{"Doe, Jane", "j@x", false}, {"Team", "", true}};
    return result;
  }

  MailResult result;
  std::function<void()> during;
  std::optional<std::int32_t> closed;
  bool cancelled = false;
  std::int32_t owner = 0;
  std::vector<MessageBuffers> sent;
};

class MailDialogTest : public ::testing::Test {
 protected:
  MailDialogTest() {
    world.mailSystems.Add(system);
    server->Put(Property::mailSystem, kVinesSystem);
    Use([](const MailForm&, MailDialogHost&) { return Answer::Cancelled; });
  }
  void Use(std::function<Answer(const MailForm&, MailDialogHost&)> use) {
    world.mailDialog.use = std::move(use);
  }
  std::string Show() {
    return FailureOf([&] { server->ShowMailDialog(); });
  }

  TestWorld world;
  WindowedBackEnd backEnd;
  FakeMailSystem system{MailFamily::Vines, backEnd};
  std::unique_ptr<Server> server = world.NewServer();
};

TEST_F(MailDialogTest, WhatIsWrittenIsSentAndStays) {
  server->AddRecipientTo("a@x");
  server->Put(Property::DialogCaption, std::string("Write"));
  server->Put(Property::hWND, 77);
  Use([&](MailForm form, MailDialogHost& host) {
    EXPECT_EQ(form.to, "a@x");
    form.cc = "b@x, c@x";
    form.subject = "s";
    form.importance = 1;
    form.receipt = true;
    EXPECT_EQ(host.Send(form, 88).text, "");
    return Answer::Sent;
  });
  EXPECT_EQ(Show(), "");
  EXPECT_EQ(world.mailDialog.caption, "Write");
  EXPECT_EQ(world.mailDialog.owner, 77);
  ASSERT_EQ(backEnd.sent.size(), 1U);
  EXPECT_EQ(backEnd.sent[0].cc, (std::vector<std::string>{"b@x", "c@x"}));
  EXPECT_EQ(world.shared.message.subject, "s");
  EXPECT_EQ(std::get<std::int16_t>(server->Get(Property::Importance)), 1);
  EXPECT_EQ(world.shared.message.certify, kTrue);
  EXPECT_EQ(world.shared.ownerWindow, 77);
}

TEST_F(MailDialogTest, TheTextsOfCancel) {
  const struct {
    ShortBool raises;
    Answer answer;
    const char* failure;
  } cases[] = {{kFalse, Answer::Cancelled, ""},
               {kTrue, Answer::Cancelled, "522 User selected cancel in mail dialog."},
               {kTrue, Answer::Sent, ""},
               {kFalse, Answer::Unavailable, "522 The user aborted the operation."},
               {kTrue, Answer::Unavailable, "522 The user aborted the operation."}};
  for (const auto& [raises, answer, failure] : cases) {
    server->Put(Property::DialogErrorOnCancel, raises);
    Use([answer = answer](const MailForm&, MailDialogHost&) { return answer; });
    EXPECT_EQ(Show(), failure);
  }
  Use(nullptr);
  server->Put(Property::NativeMailDialog, kTrue);
  backEnd.closed = kClosedNumber;
  EXPECT_EQ(Show(), "522 The user aborted the operation.");
  EXPECT_TRUE(backEnd.sent.empty());
}

TEST_F(MailDialogTest, AFailureIsToldAndLeavesTheMessageAsItWas) {
  server->AddRecipientTo("before@x");
  const struct {
    const char* to;
    MailResult result;
    std::function<void()> during;
    const char* words;
    MailField field;
  } cases[] = {
      {"", {}, {}, "No addressees were specified.", MailField::To},
      {"a@x", {3, "Not today."}, {}, "Not today.", MailField::None},
      {"a@x",
       {},
       [] { throw ServerError(530); },
       "Operation not supported by this mail system.",
       MailField::None},
      {"a@x",
       {},
       [] { throw std::runtime_error("secret"); },
       "Undetermined error in Send method.",
       MailField::None},
  };
  Use([&](MailForm form, MailDialogHost& host) {
    for (const auto& [to, result, during, words, field] : cases) {
      backEnd.result = result;
      backEnd.during = during;
      form.to = to;
      form.subject = "changed";
      const auto failure = host.Send(form, 1);
      EXPECT_EQ(failure.text, words);
      EXPECT_EQ(failure.field, field);
    }
    return Answer::Cancelled;
  });
  EXPECT_EQ(Show(), "");
  EXPECT_EQ(world.shared.message.to, std::vector<std::string>{"before@x"});
  EXPECT_EQ(world.shared.message.subject, "");
}

TEST_F(MailDialogTest, TheMailSystemsOwnWindow) {
  const struct {
    std::optional<std::int32_t> closed;
    MailResult result;
    ShortBool raises;
    const char* failure;
    std::size_t ours;  // how often our window was shown
  } cases[] = {
      {kClosedNumber, {}, kTrue, "", 0},
      {kClosedNumber, {kClosedNumber, "closed"}, kFalse, "", 0},
      {kClosedNumber,
       {kClosedNumber, "closed"},
       kTrue,
       "522 User selected cancel in mail dialog.",
       0},
      {kClosedNumber, {8, "broken"}, kFalse, "8 broken", 0},
      {std::nullopt, {}, kFalse, "", 1},
  };
  server->Put(Property::NativeMailDialog, kTrue);
  for (const auto& [closed, result, raises, failure, ours] : cases) {
    std::size_t shown = 0;
    Use([&](const MailForm&, MailDialogHost&) {
      ++shown;
      return Answer::Cancelled;
    });
    backEnd.closed = closed;
    backEnd.result = result;
    server->Put(Property::DialogErrorOnCancel, raises);
    EXPECT_EQ(Show(), failure);
    EXPECT_EQ(shown, ours);
  }
}

TEST_F(MailDialogTest, OthersAreServedButThereIsOneWindow) {
  const auto other = world.NewServer();
  other->Put(Property::mailSystem, kVinesSystem);
  int calls = 0;
  Use([&](MailForm form, MailDialogHost& host) {
    EXPECT_THROW(other->ShowMailDialog(), MailSystemBusy);
    EXPECT_THROW(server->ShowMailDialog(), MailSystemBusy);
    other->NewMessage();
    other->AddRecipientTo("other@x");
    other->Send();
    ++calls;
    form.to = "mine@x";
    EXPECT_EQ(host.Send(form, 1).text, "");
    return Answer::Sent;
  });
  EXPECT_EQ(Show(), "");
  EXPECT_EQ(calls, 1);
  ASSERT_EQ(backEnd.sent.size(), 2U);
  EXPECT_EQ(backEnd.sent[1].to, std::vector<std::string>{"mine@x"});
}

TEST_F(MailDialogTest, AddressesComeFromTheMailSystem) {
  Use([&](MailForm form, MailDialogHost& host) {
    EXPECT_TRUE(host.HasAddressBook());
    form.to = "Bob <b@x>";
    backEnd.cancelled = true;
    EXPECT_EQ(host.ChooseAddresses(form, 99).text, "");
    EXPECT_EQ(form.to, "Bob <b@x>");
    backEnd.cancelled = false;
    EXPECT_EQ(host.ChooseAddresses(form, 99).text, "");
    EXPECT_EQ(backEnd.owner, 99);
    EXPECT_EQ(form.to, R"("Doe, Jane" <j@x>, Team)");
    EXPECT_EQ(form.cc, "Bob <b@x>");
    backEnd.result = {5, "No book."};
    EXPECT_EQ(host.ChooseAddresses(form, 99).text, "No book.");
    return Answer::Cancelled;
  });
  EXPECT_EQ(Show(), "");
}

TEST_F(MailDialogTest, NeedsAMailSystem) {
  server->Put(Property::mailSystem, std::int16_t{3});
  EXPECT_EQ(Show(), "530 Operation not supported by this mail system.");
}

}  // namespace
}  // namespace quillon::testing
