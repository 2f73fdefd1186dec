// The address books of the mail systems whose own window lets the user choose.
#include <gtest/gtest.h>

#include "ActiveMessagingWorld.h"
#include "backends/mapi/MapiBackEnd.h"
#include "mail/AddressBooks.h"
#include "support/RecordingMapi.h"

namespace quillon::testing {
namespace {

constexpr const char* kNoFunction = "754 Address Book function not supported for this mail system.";
constexpr const char* kCancelled = "522 User selected cancel in dialog.";

std::string Told(const std::vector<AddressEntry>& entries) {
  std::string text;
  for (const auto& entry : entries) {
    text += (text.empty() ? "" : ", ") + entry.name + "|" + entry.address;
    if (entry.isGroup) text += "|group";
  }
  return text;
}

class MapiAddressBooksTest : public ::testing::Test {
 protected:
  MapiAddressBooksTest() {
    world_.mailSystems.Add(system_);
    server_ = world_.NewServer();
    server_->Put(Property::mailSystem, mail_system::kSimpleMapi);
    server_->Put(Property::LoginDialog, std::int16_t{0});
    server_->Put(Property::loginName, std::string("joe"));
    server_->Put(Property::Password, std::string("secret"));
    server_->Put(Property::hWND, std::int32_t{77});
  }
  // What the books of the Server do, or how they fail.
  std::string With(const Server::AddressBookCall& call) {
    return FailureOf([&] { server_->WithAddressBooks("Test", MemberKind::Method, call); });
  }

  TestWorld world_;
  RecordingMapi library_;
  NoLoginPrompt prompt_;
  MapiBackEnd backEnd_{{library_, *world_.files, world_.messageBox, prompt_, world_.configuration}};
  MapiMailSystem system_{world_.workstation, *world_.files, &backEnd_};
  std::unique_ptr<Server> server_;
};

TEST_F(MapiAddressBooksTest, ABookIsWhatHasBeenChosen) {
  std::unique_ptr<OpenAddressBook> book;
  std::vector<AddressEntry> entries;
  bool more = true;
  EXPECT_EQ(With([&](AddressBooks& books, MailRequest& request) {
              std::vector<std::string> names;
              books.Names(request, names);
              EXPECT_EQ(names, std::vector<std::string>{"Address Book"});
              auto result = books.Open(request, names[0], book);
              book->Fetch(request, entries, more);
              return result;
            }),
            kNoFunction);
  EXPECT_EQ(library_.calls, std::vector<std::string>{"Logon 77 joe secret 0"});
  library_.chosen = {{mapi::kBcc, "Eve", "SMTP:eve@x", "id"}, {mapi::kOriginator, "Odd", {}, {}}};
  AddressChoice choice{{{"Ann", "SMTP:ann@x", false}}, {{"Carl", "", false}}, {}};
  EXPECT_EQ(With([&](AddressBooks& books, MailRequest& request) {
              auto result = books.Show(request, choice);
              EXPECT_TRUE(book->TakeChoice(choice));
              return book->Fetch(request, entries, more);
            }),
            "");
  EXPECT_EQ(library_.calls.back(), "Address 77 Address Book 2");
  EXPECT_EQ(Told(choice.to), "Ann|SMTP:ann@x, Odd|");
  EXPECT_EQ(Told(choice.cc), "Carl|");
  EXPECT_EQ(Told(choice.bcc), "Eve|SMTP:eve@x");
  EXPECT_EQ(Told(entries), "Ann|SMTP:ann@x, Odd|, Carl|, Eve|SMTP:eve@x");
  EXPECT_FALSE(more);
}

TEST_F(MapiAddressBooksTest, AFailureLeavesTheChoiceAsItWas) {
  const std::vector<std::pair<std::uint32_t, std::string>> failures{
      {mapi::kUserAbort, kCancelled},
      {mapi::kNotSupported, kNoFunction},
      {4, "2004"},
  };
  for (const auto& [number, failure] : failures) {
    library_.failures["Address"] = number;
    AddressChoice choice{{{"Ann", "SMTP:ann@x", false}}, {}, {}};
    const auto told = With(
        [&](AddressBooks& books, MailRequest& request) { return books.Show(request, choice); });
    EXPECT_EQ(told.substr(0, failure.size()), failure);
    EXPECT_EQ(Told(choice.to), "Ann|SMTP:ann@x");
  }
  library_.failures = {{"Logon", 3}};
  server_->Logout();
  EXPECT_EQ(With([&](AddressBooks& books, MailRequest& request) {
              std::unique_ptr<OpenAddressBook> book;
              return books.Open(request, {}, book);
            }).substr(0, 4),
            "2003");
}

class ActiveMessagingAddressBooksTest : public ::testing::Test {
 protected:
  ActiveMessagingAddressBooksTest() {
    lists_ = std::make_shared<RecordingCollection>(program_.record, "AddressLists");
    program_.session->properties["AddressLists"] = AutomationObjectPtr(lists_);
    people_ = AddList("People");
    AddList("Other");
    program_.record.lines.clear();
  }

  std::shared_ptr<RecordingCollection> AddList(const std::string& name) {
    auto list = std::make_shared<RecordingObject>(program_.record, "AddressList");
    auto entries = std::make_shared<RecordingCollection>(program_.record, "AddressEntries");
    list->properties["Name"] = name;
    list->properties["AddressEntries"] = AutomationObjectPtr(entries);
    lists_->items.push_back(list);
    return entries;
  }
  RecordingObject& AddEntry(const std::string& name, const std::string& type,
                            const std::string& address, std::int32_t displayType) {
    auto entry = std::make_shared<RecordingObject>(program_.record, "AddressEntry");
    entry->properties["Name"] = name;
    entry->properties["Type"] = type;
    entry->properties["Address"] = address;
    entry->properties["DisplayType"] = displayType;
    people_->items.push_back(entry);
    return *entry;
  }
  MailResult Fetch() { return book_->Fetch(world_.request, entries_, more_); }
  void Open(const std::string& name) {
    ASSERT_TRUE(world_.backEnd.Books()->Open(world_.request, name, book_).Succeeded());
  }

  ActiveMessagingWorld world_;
  FakeMessaging& program_ = world_.program;
  std::shared_ptr<RecordingCollection> lists_;
  std::shared_ptr<RecordingCollection> people_;
  std::unique_ptr<OpenAddressBook> book_;
  std::vector<AddressEntry> entries_;
  bool more_ = false;
};

TEST_F(ActiveMessagingAddressBooksTest, EntriesComeInTurnWithTypedAddresses) {
  AddEntry("Ann", "SMTP", "ann@x", 0);
  AddEntry("Team", "EX", "EX:/o=x/cn=team", 1);
  AddEntry("Mine", "MAPIPDL", "", 5);
  AddEntry("Nobody", "", "", 6).methods["Type"] = [](const auto&) -> AutomationValue {
    throw AutomationError(kMapiNotFound, "none");
  };
  std::vector<std::string> names;
  EXPECT_TRUE(world_.backEnd.Books()->Names(world_.request, names).Succeeded());
  EXPECT_EQ(names, (std::vector<std::string>{"People", "Other"}));
  Open("People");
  EXPECT_TRUE(Fetch().Succeeded());
  EXPECT_EQ(Told(entries_), "Ann|SMTP:ann@x, Team|EX:/o=x/cn=team|group, Mine||group, Nobody|");
  EXPECT_FALSE(more_);
  EXPECT_EQ(program_.record.Count("get AddressEntries.Count"), 0U);
  EXPECT_EQ(FailureOf([&] { Open("Lost"); }), "529 Address book does not exist.");
  Open("");
  world_.backEnd.Logout(world_.request);
  EXPECT_TRUE(book_->HasEnded());
  EXPECT_EQ(FailureOf([&] { Fetch(); }).substr(0, 3), "751");
}

TEST_F(ActiveMessagingAddressBooksTest, AnEntryThatCannotBeReadComesAgain) {
  for (int i = 0; i < 120; ++i) AddEntry("E" + std::to_string(i), "SMTP", "x", 0);
  Open("");
  people_->items[70]->methods["Name"] = [](const auto&) -> AutomationValue {
    throw AutomationError(static_cast<std::int32_t>(0x80004005U), "broken");
  };
  EXPECT_TRUE(Fetch().Succeeded());
  EXPECT_TRUE(more_);
  EXPECT_EQ(Fetch().number, 106);
  EXPECT_EQ(entries_.size(), 70U);
  people_->items[70]->methods.clear();
  while (Fetch().Succeeded() && more_) {
  }
  ASSERT_EQ(entries_.size(), 120U);
  EXPECT_EQ(entries_[70].name, "E70");
  EXPECT_EQ(entries_[119].name, "E119");
}

TEST_F(ActiveMessagingAddressBooksTest, TheWindowTakesAndGivesTheRecipients) {
  AddressChoice choice{{{"Ann", "SMTP:ann@x", false}}, {}, {{"Eve", "", false}}};
  const auto show = [&] { return world_.backEnd.Books()->Show(world_.request, choice); };
  EXPECT_EQ(FailureOf(show), "754 ");  // of an older library
  std::int32_t failure = 0;
  program_.session->methods["AddressBook"] = [&](const AutomationArguments& arguments) {
    if (failure != 0) throw AutomationError(failure, "as told");
    auto& recipients = dynamic_cast<RecordingCollection&>(*ObjectOf(arguments[0].value));
    EXPECT_EQ(recipients.items.size(), 2U);
    recipients.items[1]->properties["Type"] = std::int32_t{2};
    recipients.items[1]->properties["Address"] = std::string();
    recipients.items[0]->properties["Name"] = "Ann Archer";
    return arguments[0].value;
  };
  failure = static_cast<std::int32_t>(0x80040113U);
  EXPECT_EQ(FailureOf(show), kCancelled);
  failure = static_cast<std::int32_t>(0x80004005U);
  EXPECT_EQ(show().number, 106);
  EXPECT_EQ(Told(choice.to) + Told(choice.bcc), "Ann|SMTP:ann@xEve|");
  failure = 0;
  world_.shared.ownerWindow = 77;
  EXPECT_TRUE(show().Succeeded());
  EXPECT_EQ(Told(choice.to), "Ann Archer|SMTP:ann@x");
  EXPECT_EQ(Told(choice.cc), "Eve|");
  EXPECT_TRUE(choice.bcc.empty());
  EXPECT_EQ(program_.record.Count("call Session.AddressBook Recipients=object "
                                  "Title='Address Book' RecipLists=3 ParentWindow=77"),
            1U);
  EXPECT_EQ(program_.Messages(*program_.outbox).items.size(), 0U);
}

}  // namespace
}  // namespace quillon::testing
