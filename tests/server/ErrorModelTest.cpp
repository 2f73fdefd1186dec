#include <gtest/gtest.h>

#include "server/ErrorTable.h"
#include "server/VersionText.h"
#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::FailureOf;
using testing::TestWorld;

std::int32_t PublicNumber(std::uint32_t code) {
  return static_cast<std::int32_t>(kErrorNumberBase + code);
}

TEST(ErrorModel, PublicCodesAreTakenApartByTheirRanges) {
  const struct {
    std::int32_t number;
    MailSystemId system;
    const char* text;
  } kCases[] = {
      {PublicNumber(515), 0, "No mail system was detected."},
      {PublicNumber(752), 0, "No mail system was detected."},
      {PublicNumber(541), 0,
       "You cannot execute an asynchronous method until after the AsynchNotification method exits "
       "back to Quillon."},
      {PublicNumber(2005), 1, "Insufficient memory"},
      {PublicNumber(2014), 1, "Bad addressee"},
      {PublicNumber(2002), 0, "Undetermined"},
      {PublicNumber(4261), 2, "User cancelled"},
      {PublicNumber(4014), 0, "Undetermined"},
      {PublicNumber(8146), 9, "password is expired."},
      {PublicNumber(2522), 1, "The user aborted the operation."},
      {PublicNumber(3001), 0, "Undetermined"},
      {PublicNumber(7005), 0, "Undetermined"},
      {PublicNumber(600), 0, "Undetermined"},
      {PublicNumber(760), 0, "Undetermined"},
      {PublicNumber(262656), 0, "Undetermined"},
      {5, 0, "Undetermined"},
  };
  TestWorld world;
  const auto server = world.NewServer();
  for (const auto& test : kCases) {
    const auto decoded = server->DecodeError(test.number);
    EXPECT_EQ(test.system, decoded.mailSystem) << test.number;
    EXPECT_EQ(test.text, decoded.message) << test.number;
  }
  EXPECT_EQ(254656, OriginOfCode(262656).interfaceError);
  EXPECT_EQ(3001, OriginOfCode(3001).interfaceError);  // the VINES range is not reduced
  EXPECT_EQ(12, OriginOfCode(7005).system);
}

TEST(ErrorModel, WhatIsFoldedIsTakenApartAsTheSameFamilys) {
  for (MailSystemId system = 1; system <= 10; ++system) {
    std::int32_t number = 25;
    const auto origin = OriginOfCode(ErrorBase(system, number));
    EXPECT_EQ(FamilyOf(system), FamilyOf(origin.system)) << system;
    EXPECT_EQ(25, origin.interfaceError) << system;
  }
}

TEST(ErrorModel, SomeNumbersAreFoldedByRulesOfTheirOwn) {
  const struct {
    MailSystemId system;
    std::int32_t interfaceError;
    std::int32_t code;
  } kCases[] = {
      // out of range
      {2, 200000, 4000},
      {2, -100001, 4000},
      {2, 100000, 104000},
      // Notes
      {11, 3999, 5999},
      {11, 4000, 9000},
      {11, 6999, 11999},
      {11, 7000, 9000},
      // no range of their own, and no base
      {30, 1, 10001},
      {40, 1, 11001},
      {20, 9, 9},
      {0, 9, 9},
      {77, 9, 9},
  };
  for (const auto& test : kCases) {
    auto number = test.interfaceError;
    EXPECT_EQ(test.code, ErrorBase(test.system, number)) << test.system;
  }
}

TEST(ErrorModel, BackEndFailuresReachTheClientFolded) {
  TestWorld world;
  testing::FakeBackEnd vim;
  VimMailSystem vimSystem(world.workstation, &vim);
  world.mailSystems.Add(vimSystem);
  const auto server = world.NewServer();
  server->Put(Property::mailSystem, 2);
  server->AddRecipientTo("a@b");

  const struct {
    MailResult result;
    const char* expected;
  } kCases[] = {
      {{3, "Login failed"}, "4003 Login failed"},
      {{522, "aborted"}, "4522 The user aborted the operation."},
      {{200000, {}}, "4000 Undetermined"},
      {{200000, "Out of range"}, "4000 Out of range"},
      {{3, "Login failed", "it said: no"}, "4003 Login failed"},
      {{3, "Login failed", "it said: no", true}, "4003 Login failed (it said: no)"},
      {{3, "Login failed", "", true}, "4003 Login failed"},
      {{530, "", "it said: no", true},
       "4530 Operation not supported by this mail system. (it said: no)"},
      {{}, ""},
  };
  for (const auto& test : kCases) {
    vim.result = test.result;
    EXPECT_EQ(test.expected, FailureOf([&] { server->Send(); }));
  }

  vim.during = [] { throw ServerError(544); };
  EXPECT_EQ("544 Insufficient login information.", FailureOf([&] { server->Login(); }));
  vim.during = [] { throw std::runtime_error("anything"); };
  EXPECT_EQ("0 Undetermined error in Send method.", FailureOf([&] { server->Send(); }));
  EXPECT_EQ("530 Operation not supported by this mail system.",
            FailureOf([&] { server->Logout(); }));
}

TEST(ErrorModel, TheDebugBoxShowsTheServersOwnFailures) {
  TestWorld world;
  testing::FakeBackEnd vim;
  VimMailSystem vimSystem(world.workstation, &vim);
  world.mailSystems.Add(vimSystem);
  const auto server = world.NewServer();
  EXPECT_NE("", FailureOf([&] { server->Send(); }));
  EXPECT_TRUE(world.messageBox.shown.empty());

  server->Put(Property::ErrorDisplay, true);
  EXPECT_EQ("display on", vim.calls.back());
  EXPECT_EQ("516 No addressees were specified.", FailureOf([&] { server->Send(); }));
  ASSERT_EQ(1U, world.messageBox.shown.size());
  EXPECT_EQ("Mail Error|No addressees were specified.: {516}", world.messageBox.shown[0]);

  // The back end shows its own box for its own numbers.
  server->Put(Property::mailSystem, 2);
  vim.result = {3, "Login failed"};
  EXPECT_NE("", FailureOf([&] { server->Login(); }));
  EXPECT_EQ(1U, world.messageBox.shown.size());
}

TEST(ErrorModel, VersionsReadAsOneNumber) {
  EXPECT_EQ("3.05", VersionText(3, 5));
  EXPECT_EQ("4.0", VersionText(4, 0));
  EXPECT_EQ("1.1", VersionText(1, 10));
}

}  // namespace
}  // namespace quillon
