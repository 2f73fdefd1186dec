// Registering an object, taking it back, and the events of an abort.
#include <gtest/gtest.h>

#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

class Listener final : public NotificationObject {
 public:
  bool AsynchNotification(const AsynchEvent& event) override {
    heard.push_back(std::to_string(event.operation) + " " + std::to_string(event.kind) + " " +
                    std::to_string(event.result) + " " + event.text);
    return true;
  }
  std::vector<std::string> heard;
};

TEST(AsynchMembers, RegistrationSaysWhatItDoesNotTake) {
  TestWorld world;
  const auto server = world.NewServer();
  const auto listener = std::make_shared<Listener>();
  EXPECT_EQ(FailureOf([&] { server->AsynchObjectRegister(listener, 1, 1); }),
            "542 Object type not supported.");
  EXPECT_EQ(FailureOf([&] { server->AsynchObjectRegister(listener, 0, 2); }),
            "542 Configuration parameter not supported.");
  EXPECT_EQ(FailureOf([&] { server->AsynchObjectRegister(nullptr, 0, 1); }),
            "542 Unable to register asynchronous notification object.");
  EXPECT_FALSE(world.notifier.Registered());
  server->AsynchObjectRegister(listener, 0, 1);
  EXPECT_TRUE(world.notifier.Registered());
  const auto other = world.NewServer();  // takes every registration back
  EXPECT_FALSE(world.notifier.Registered());
}

TEST(AsynchMembers, AnAbortIsToldTwice) {
  TestWorld world;
  FakeBackEnd working;
  FakeMailSystem system(MailFamily::Vim, working);
  world.mailSystems.Add(system);
  const auto server = world.NewServer();
  server->Put(Property::mailSystem, mail_system::kNotes);
  const auto listener = std::make_shared<Listener>();
  EXPECT_EQ(FailureOf([&] { server->AsynchAbort(); }),
            "538 No asynchronous notification object has been registered.");
  server->AsynchObjectRegister(listener, 0, 0);

  AsynchEvent event;
  event.operation = asynch_operation::kSend;
  event.kind = asynch_kind::kRecordOnly;
  world.notifier.Post(event);
  EXPECT_TRUE(listener->heard.empty());
  world.notifier.SetInProgress();
  EXPECT_EQ(FailureOf([&] { server->AsynchObjectUnregister(0); }).substr(0, 3), "540");
  server->Put(Property::undocumented1, Value(std::string("|ASYNCH_TAGS|-1")));
  server->AsynchAbort();
  EXPECT_EQ(listener->heard,
            (std::vector<std::string>{"1 2 539 Process aborted. Tag: AAP1",
                                      "5 2 -1 Asynchronous abort was successful. Tag: AAP2"}));
  // What runs is aborted, whatever system the one that asks has chosen.
  EXPECT_EQ(working.calls, std::vector<std::string>{"AsynchAbort"});
  server->AsynchObjectUnregister(0);
  EXPECT_FALSE(world.notifier.Registered());
}

}  // namespace
}  // namespace quillon::testing
