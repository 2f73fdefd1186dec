#include <gtest/gtest.h>

#include "dialogs/MailSystemList.h"

namespace quillon::testing {
namespace {

TEST(MailSystemListTest, WhatIsMissingStandsLastWithTheReason) {
  const MailSystemList list([](MailSystemId system) {
    return system == mail_system::kInternet || system == mail_system::kNotes;
  });
  const auto& choices = list.Choices();
  ASSERT_EQ(7U, choices.size());
  EXPECT_EQ("Notes", choices[1].name);
  for (std::size_t i = 0; i < choices.size(); ++i) EXPECT_EQ(i < 2, choices[i].reason.empty()) << i;
}

TEST(MailSystemListTest, AnotherIdentifierOfTheFamilyStays) {
  const MailSystemList list([](MailSystemId) { return true; });
  EXPECT_EQ(0U, list.PlaceOf(mail_system::kNone));
  const auto mapi = list.PlaceOf(8);
  EXPECT_EQ("Simple MAPI", list.Choices().at(mapi).name);
  EXPECT_EQ(8, list.Taken(mapi, 8));
  EXPECT_EQ(mail_system::kSimpleMapi, list.Taken(mapi, mail_system::kInternet));
  EXPECT_EQ(mail_system::kPop3, list.Taken(0, mail_system::kPop3));
  EXPECT_EQ(mail_system::kInternet, list.Taken(0, mail_system::kNone));
}

}  // namespace
}  // namespace quillon::testing
