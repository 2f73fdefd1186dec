#include <cmath>
#include <gtest/gtest.h>

#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::FailureOf;
using testing::FakeBackEnd;
using testing::FakeMailSystem;
using testing::TestWorld;

constexpr const char* kInvalid = "529 Invalid property value.";

// What scripts have no literal for; the ordinary values are put by the end-to-end tests.
TEST(ServerProperty, ExtremePutsFailAndKeepTheOldValue) {
  const struct {
    Property property;
    std::vector<Value> accepted;
    std::vector<Value> refused;
  } kCases[] = {
      {Property::ErrorDisplay, {true, std::string("-1")}, {100000, 1e30}},
      {Property::UTCOffset, {5.5}, {-49.9, -51, std::nan("")}},
      {Property::recipientDelimiter, {std::string("\xC2\xA7")}, {std::string("\xF0\x9F\x98\x80")}},
      {Property::dateFormat, {std::string("yyyy-mm-dd")}, {std::string("99999999999")}},
      {Property::mailSystem, {20}, {70000, 1e300}},
      {Property::POPSecurity, {std::string("2")}, {4, 100000}},
      {Property::Authentication, {std::string("scram-sha-256,\tPLAIN ")}, {std::string("PLAINER")}},
      {Property::PinnedCertificate,
       {std::string("key:") + std::string(64, 'a'), std::string()},
       {std::string(63, 'a')}},
  };
  TestWorld world;
  const auto server = world.NewServer();
  for (const auto& test : kCases) {
    for (const auto& value : test.accepted) {
      EXPECT_EQ("", FailureOf([&] { server->Put(test.property, value); }))
          << static_cast<int>(test.property) << " " << ToText(value);
    }
    const auto kept = server->Get(test.property);
    for (const auto& value : test.refused) {
      EXPECT_EQ(kInvalid, FailureOf([&] { server->Put(test.property, value); }))
          << static_cast<int>(test.property) << " " << ToText(value);
      EXPECT_EQ(kept, server->Get(test.property));
    }
    EXPECT_EQ("type mismatch", FailureOf([&] { server->Put(test.property, NullValue()); }));
  }
}

TEST(ServerProperty, DirectoriesAndPasswordsAreChecked) {
  TestWorld world;
  const auto server = world.NewServer();
  EXPECT_EQ("529 Directory does not exist.", FailureOf([&] {
              server->Put(Property::AttachmentDirectory, world.folder.Path("none"));
            }));
  server->Put(Property::AttachmentDirectory, world.folder.Path());
  EXPECT_EQ(Value(world.folder.Path()), server->Get(Property::AttachmentDirectory));
  server->Put(Property::AttachmentDirectory, std::string());

  server->Put(Property::ZipPassword, std::string(65, 'x'));
  EXPECT_EQ("529 Password length exceeds maximum length of 65 characters.",
            FailureOf([&] { server->Put(Property::ZipPassword, std::string(66, 'x')); }));
}

TEST(ServerProperty, DateFormatsHaveNumbers) {
  TestWorld world;
  const auto server = world.NewServer();
  for (std::int16_t i = 0; i < 6; ++i) {
    server->Put(Property::dateFormat, i);
    EXPECT_EQ(Value(i), server->Get(Property::dateFormat));
  }
  const std::pair<const char*, Value> kTexts[] = {{"long date", std::int16_t{3}},
                                                  {"2", std::int16_t{2}},
                                                  {"yyyy-mm-dd", std::string("yyyy-mm-dd")}};
  for (const auto& [text, expected] : kTexts) {
    server->Put(Property::dateFormat, std::string(text));
    EXPECT_EQ(expected, server->Get(Property::dateFormat));
  }
}

TEST(ServerProperty, PortsAboveTheShortRangeReadBackAsThemselves) {
  TestWorld world;
  const auto server = world.NewServer();
  server->Put(Property::SMTPPort, 2525);
  EXPECT_EQ(Value(std::int16_t{2525}), server->Get(Property::SMTPPort));
  server->Put(Property::POPPort, -15536);  // the short that has the bits of 50000
  EXPECT_EQ(Value(50000), server->Get(Property::POPPort));
  EXPECT_EQ("overflow", FailureOf([&] { server->Put(Property::SMTPPort, 65536); }));
}

TEST(ServerProperty, InstancesShareTheMessageAndResetTheInternetSettings) {
  TestWorld world;
  const auto first = world.NewServer();
  first->Put(Property::subject, std::string("shared"));
  first->Put(Property::loginName, std::string("own"));
  first->Put(Property::SMTPPort, 2525);
  world.shared.message.auxiliaryText = "aux";
  const auto second = world.NewServer();
  EXPECT_EQ(Value(std::string("shared")), second->Get(Property::subject));
  EXPECT_EQ(Value(std::string()), second->Get(Property::loginName));
  EXPECT_EQ(Value(std::int16_t{25}), first->Get(Property::SMTPPort));
  second->Put(Property::SMTPSecurity, 3);
  EXPECT_EQ(Value(std::int16_t{0}), first->Get(Property::SMTPSecurity));
  world.shared.connection.tlsVersion = "TLS 1.2";
  EXPECT_EQ(Value(std::string("TLS 1.2")), second->Get(Property::TLSVersion));
  EXPECT_EQ("", world.shared.message.auxiliaryText);
}

TEST(ServerProperty, SessionHandlesStayWithTheirFamilies) {
  TestWorld world;
  testing::FakeBackEnd mapi;
  MapiMailSystem mapiSystem(world.workstation, *world.files, &mapi);
  world.mailSystems.Add(mapiSystem);
  auto server = world.NewServer();
  EXPECT_EQ("529 Could not set session handle, MailSystem property must be set first.",
            FailureOf([&] { server->Put(Property::SessionHandleEx, 5); }));
  server->Put(Property::mailSystem, 1);
  server->Put(Property::SessionHandleEx, 5);
  server->Put(Property::mailSystem, 10);
  EXPECT_EQ(Value(0), server->Get(Property::sessionHandle));
  EXPECT_EQ("529 Could not set session handle.",
            FailureOf([&] { server->Put(Property::SessionHandleEx, 6); }));
  server->Put(Property::mailSystem, 8);
  EXPECT_EQ(Value(5), server->Get(Property::SessionHandleEx));
  mapi.result = {3, {}};
  EXPECT_EQ("529 Could not set session handle.",
            FailureOf([&] { server->Put(Property::SessionHandleEx, 6); }));

  // The back ends are shut down with the last instance, and each learns the handle of its family.
  auto second = world.NewServer();
  second.reset();
  EXPECT_EQ(2U, mapi.calls.size());
  server.reset();
  EXPECT_EQ("Shutdown 5", mapi.calls.back());
}

// The process stays for a moment when the last client has left; the next one may be a stranger.
TEST(ServerProperty, TheLastInstanceLeavesNothingToTheNextClient) {
  TestWorld world;
  FakeBackEnd backEnd;
  FakeMailSystem system(MailFamily::Vim, backEnd);
  world.mailSystems.Add(system);
  auto server = world.NewServer();
  server->AddRecipientTo("ann@example.org");
  server->AddRecipientBcc("secret@example.org");
  server->Put(Property::Message, std::string("a text"));
  server->Put(Property::Certify, -1);
  server->Put(Property::hWND, 5);
  server->AddXHeader("Kind", "own");
  server->Put(Property::undocumented1, std::string("|ONLY_RECIP|boss@example.org"));
  server->Put(Property::undocumented1, std::string("|MSG_LINES|3"));
  world.shared.message.rawHeaders = "From: ann\r\n";
  world.shared.headers.resize(2);
  world.notifier.SetInProgress();
  auto second = world.NewServer();
  server.reset();
  EXPECT_EQ(second->GetMessageItemString(1), "ann@example.org");  // one is still there

  // One that comes while the mail systems are shut down keeps what it has done.
  std::unique_ptr<Server> third;
  backEnd.during = [&] {
    third = world.NewServer();
    EXPECT_EQ(third->GetMessageItemCount(1) + third->GetMessageItemCount(3), 0);
    EXPECT_EQ(third->Get(Property::Message), Value(std::string()));
    EXPECT_EQ(third->Get(Property::Certify), Value(kFalse));
    EXPECT_EQ(third->Get(Property::hWND), Value(0));
    EXPECT_EQ(third->Get(Property::messageCount), Value(0));
    EXPECT_FALSE(world.notifier.InProgress());
    third->Put(Property::InternetLogging, -1);
    third->Put(Property::subject, std::string("own"));
  };
  second.reset();
  EXPECT_EQ(backEnd.calls, (std::vector<std::string>{"AsynchAbort", "Shutdown 0"}));
  ASSERT_NE(third, nullptr);
  EXPECT_TRUE(world.log.IsOpen());
  EXPECT_EQ(third->Get(Property::subject), Value(std::string("own")));
  const auto& shared = world.shared;
  EXPECT_EQ(shared.switches.envelopeRecipient + shared.message.rawHeaders, "");
  EXPECT_EQ(shared.switches.maximumBodyLines, 0);
  EXPECT_TRUE(shared.message.xHeaders.empty());
  backEnd.during = nullptr;
}

TEST(ServerProperty, LoggingFollowsTheSwitchAndEndsWithTheLastInstance) {
  TestWorld world;
  auto server = world.NewServer();
  server->Put(Property::InternetLogging, -1);
  EXPECT_TRUE(world.log.IsOpen());
  server->Put(Property::InternetLogging, 0);
  EXPECT_FALSE(world.log.IsOpen());
  server->Put(Property::InternetLogging, true);
  server.reset();
  EXPECT_FALSE(world.log.IsOpen());
}

}  // namespace
}  // namespace quillon
