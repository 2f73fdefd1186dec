// The AddressBook on a Server whose mail system is made for the test.
#include <gtest/gtest.h>

#include "addressbook/AddressBook.h"
#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::FailureOf;
using testing::FakeBackEnd;
using testing::FakeMailSystem;
using testing::TestWorld;

constexpr const char* kClosed = "751 The Address Book is not open.";

// A mail system with books of made-up entries, which come so many at a time.
class FakeBooks final : public BackEnd, public AddressBooks {
 public:
  AddressBooks* Books() override { return this; }
  MailResult Login(MailRequest& request) override {
    request.instance.session = {7, true, false};
    return {};
  }
  MailResult Logout(MailRequest& request) override {
    request.instance.session = {};
    return {};
  }

  MailResult Names(MailRequest&, std::vector<std::string>& found) override {
    found = names;
    return result;
  }
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override {
    opened = name;
    Login(request);
    if (during) during();
    if (result.Succeeded()) book = std::make_unique<Book>(*this);
    return result;
  }
  MailResult Show(MailRequest&, AddressChoice& choice) override {
    before = choice;
    if (!result.Succeeded()) return result;
    choice = chosen;
    return {};
  }

  std::vector<std::string> names{"Personal", "Company"};
  std::vector<AddressEntry> entries{
      {"Ann", "ann@x", false}, {"Bob", "bob@x", false}, {"\u00C9mile", "", true}};
  std::size_t batch = 2;
  bool endless = false;
  bool ended = false;
  bool takesChoice = false;
  std::size_t failsAt = 999999;  // when so many entries have been fetched
  MailResult result;
  AddressChoice chosen;
  std::function<void()> during;

  AddressChoice before;
  std::string opened;
  std::size_t fetches = 0;
  int open = 0;

 private:
  class Book final : public OpenAddressBook {
   public:
    explicit Book(FakeBooks& books) : books_(books), entries_(books.entries) { ++books_.open; }
    ~Book() override { --books_.open; }
    MailResult Fetch(MailRequest&, std::vector<AddressEntry>& entries, bool& more) override {
      ++books_.fetches;
      for (std::size_t i = 0; i < books_.batch && next_ < entries_.size(); ++i) {
        if (next_ == books_.failsAt) return {23, "The line is down."};
        entries.push_back(entries_[next_++]);
      }
      more = books_.endless || next_ < entries_.size();
      return {};
    }
    bool HasEnded() const override { return books_.ended; }
    bool TakeChoice(const AddressChoice& choice) override {
      if (books_.takesChoice) entries_ = choice.to;
      if (books_.takesChoice) next_ = 0;
      return books_.takesChoice;
    }

   private:
    FakeBooks& books_;
    std::vector<AddressEntry> entries_;
    std::size_t next_ = 0;
  };
};

class AddressBookTest : public ::testing::Test {
 protected:
  AddressBookTest() {
    world_.mailSystems.Add(system_);
    world_.mailSystems.Add(otherSystem_);
    world_.mailSystems.Add(internetSystem_);
    server_ = world_.NewServer();
    Select(mail_system::kVines);
    book_.SetMailObject(server_);
  }

  void Select(MailSystemId system) { server_->Put(Property::mailSystem, system); }

  // Where the walk stands: the marks, or the entry.
  std::string Place() {
    std::string place;
    if (book_.BeginMark() == kTrue) place += "BOF ";
    if (book_.EndMark() == kTrue) place += "EOF ";
    const auto name = book_.Name();
    if (!name.empty()) place += name + " " + book_.Address();
    if (book_.EntryType() != 0) place += " group";
    return place;
  }

  TestWorld world_;
  FakeBooks mail_;
  FakeMailSystem system_{MailFamily::Vines, mail_};
  FakeMailSystem otherSystem_{MailFamily::Mhs, mail_};
  FakeBackEnd internet_;
  FakeMailSystem internetSystem_{MailFamily::Internet, internet_};
  std::shared_ptr<Server> server_;
  AddressBook book_;
};

TEST_F(AddressBookTest, WalksForwardsAndBackwardsAndStopsAtTheMarks) {
  mail_.names.emplace_back("Third");
  book_.OpenAddressBook(" company ");
  EXPECT_EQ(mail_.opened, "Company");
  EXPECT_EQ(mail_.fetches, 0U);
  using Step = void (AddressBook::*)();
  const std::vector<std::pair<Step, std::string>> steps{
      {&AddressBook::MovePrevious, "BOF "},
      {&AddressBook::MovePrevious, "BOF "},
      {&AddressBook::MoveNext, "Ann ann@x"},
      {&AddressBook::MoveNext, "Bob bob@x"},
      {&AddressBook::MoveNext, "\u00C9mile  group"},
      {&AddressBook::MoveNext, "EOF "},
      {&AddressBook::MoveNext, "EOF "},
      {&AddressBook::MovePrevious, "\u00C9mile  group"},
      {&AddressBook::MoveFirst, "Ann ann@x"},
      {&AddressBook::MoveLast, "\u00C9mile  group"},
      {&AddressBook::MovePrevious, "Bob bob@x"},
  };
  for (const auto& [step, place] : steps) {
    (book_.*step)();
    EXPECT_EQ(Place(), place);
  }
  EXPECT_EQ(book_.Count(), 3);
  EXPECT_EQ(book_.GetAddressBookItems(1), (std::vector<std::string>{"Ann", "Bob", "\u00C9mile"}));
  EXPECT_EQ(book_.GetAddressBookItems(2), (std::vector<std::string>{"ann@x", "bob@x", ""}));
  EXPECT_EQ(Place(), "Bob bob@x");
  EXPECT_EQ(mail_.fetches, 2U);
  EXPECT_EQ(book_.BookNames(), mail_.names);
  EXPECT_EQ(book_.SessionHandle(), Value(std::int32_t{7}));
}

TEST_F(AddressBookTest, AnEmptyBookHasBothMarksWhateverIsDone) {
  mail_.entries.clear();
  book_.OpenAddressBook("");
  EXPECT_EQ(mail_.opened, "");
  for (const auto step : {&AddressBook::MovePrevious, &AddressBook::MoveNext,
                          &AddressBook::MoveLast, &AddressBook::MoveFirst}) {
    (book_.*step)();
    EXPECT_EQ(Place(), "BOF EOF ");
  }
  EXPECT_EQ(book_.Count(), 0);
  EXPECT_EQ(book_.Find(""), kFalse);
  EXPECT_TRUE(book_.GetAddressBookItems(1).empty());
}

TEST_F(AddressBookTest, FindsTheBeginningOfANameInAnyCase) {
  mail_.entries.push_back({"\u0416\u0435\u043D\u044F", "zh@x", false});
  mail_.entries.push_back({"BOBBY", "bobby@x", false});
  book_.OpenAddressBook("");
  const std::vector<std::pair<std::string, std::string>> cases{
      {"bO", "Bob bob@x"},
      {"bobb", "BOBBY bobby@x"},
      {"obb", ""},
      {"\u00E9MI", "\u00C9mile  group"},
      {"\u0436\u0415\u041D", "\u0416\u0435\u043D\u044F zh@x"},
      {"Annette", ""},
      {"", "Ann ann@x"},
  };
  std::string before = "Ann ann@x";
  for (const auto& [beginning, place] : cases) {
    EXPECT_EQ(book_.Find(beginning), ToShortBool(!place.empty())) << beginning;
    if (!place.empty()) before = place;
    EXPECT_EQ(Place(), before) << beginning;
  }
}

TEST_F(AddressBookTest, EveryMemberFailsInTheSameOrder) {
  const std::vector<std::function<void(AddressBook&)>> onOpenBook{
      [](AddressBook& book) { book.CloseAddressBook(); },
      [](AddressBook& book) { book.MoveFirst(); },
      [](AddressBook& book) { book.MoveNext(); },
      [](AddressBook& book) { book.MoveLast(); },
      [](AddressBook& book) { book.MovePrevious(); },
      [](AddressBook& book) { book.Name(); },
      [](AddressBook& book) { book.Address(); },
      [](AddressBook& book) { book.EntryType(); },
      [](AddressBook& book) { book.Count(); },
      [](AddressBook& book) { book.BeginMark(); },
      [](AddressBook& book) { book.EndMark(); },
      [](AddressBook& book) { book.Find("A"); },
      [](AddressBook& book) { book.GetAddressBookItems(9); },
  };
  auto members = onOpenBook;
  members.emplace_back([](AddressBook& book) { book.OpenAddressBook("no such book"); });
  members.emplace_back([](AddressBook& book) { book.BookNames(); });
  members.emplace_back([](AddressBook& book) { book.ShowAddressBook(); });
  TestWorld bare;
  const std::shared_ptr<Server> without = bare.NewServer();
  for (const auto& member : members) {
    AddressBook book;
    EXPECT_EQ(FailureOf([&] { member(book); }),
              "750 The Address Book MailObject property is not set or is nothing.");
    book.SetMailObject(without);
    EXPECT_EQ(FailureOf([&] { member(book); }), "752 No mail system was detected.");
    Select(mail_system::kInternet);
    book.SetMailObject(server_);
    EXPECT_EQ(FailureOf([&] { member(book); }),
              "753 No Address Book support for this mail system.");
    Select(mail_system::kVines);
  }
  for (const auto& member : onOpenBook) {
    EXPECT_EQ(FailureOf([&] { member(book_); }), kClosed);
  }
  EXPECT_EQ(FailureOf([&] { book_.OpenAddressBook("x"); }), "529 Address book does not exist.");
  book_.OpenAddressBook("");
  EXPECT_EQ(FailureOf([&] { book_.GetAddressBookItems(3); }), "529 Invalid parameter.");
  book_.SetMailObject(nullptr);
  EXPECT_EQ(FailureOf([&] { book_.SessionHandle(); }).substr(0, 3), "750");
}

TEST_F(AddressBookTest, WhateverTakesTheSessionAwayClosesTheBook) {
  const std::shared_ptr<Server> other = world_.NewServer();
  const std::vector<std::function<void()>> ends{
      [&] { server_->Logout(); },
      [&] { mail_.ended = true; },
      [&] { book_.CloseAddressBook(); },
      [&] { book_.SetMailObject(other), book_.SetMailObject(server_); },
      [&] { Select(mail_system::kMhs); },
  };
  for (const auto& end : ends) {
    book_.OpenAddressBook("");
    book_.MoveLast();
    end();
    EXPECT_EQ(FailureOf([&] { book_.Name(); }), kClosed);
    Select(mail_system::kVines);
    mail_.ended = false;
    EXPECT_EQ(FailureOf([&] { book_.Name(); }), kClosed);
    EXPECT_EQ(mail_.open, 0);
  }
}

TEST_F(AddressBookTest, AFailureHalfWayKeepsWhatHasBeenFetched) {
  mail_.failsAt = 2;
  book_.OpenAddressBook("");
  book_.MoveNext();
  // Folded as those of the mail system are; its base is 0.
  EXPECT_EQ(FailureOf([&] { book_.MoveNext(); }), "23 The line is down.");
  EXPECT_EQ(FailureOf([&] { book_.Count(); }), "23 The line is down.");
  EXPECT_EQ(Place(), "Bob bob@x");
  EXPECT_EQ(FailureOf([&] { book_.Find("x"); }), "23 The line is down.");
  mail_.failsAt = 999999;
  book_.MoveNext();
  EXPECT_EQ(Place(), "\u00C9mile  group");
  mail_.result = {5, ""};
  EXPECT_EQ(FailureOf([&] { book_.OpenAddressBook(""); }), "5 Undetermined");
  EXPECT_EQ(Place(), "\u00C9mile  group");  // the old book stays
  mail_.result = {};
  mail_.during = [] { throw std::length_error("broken"); };
  EXPECT_EQ(FailureOf([&] { book_.OpenAddressBook(""); }),
            "0 Undetermined error in OpenAddressBook method.");
}

TEST_F(AddressBookTest, ManyEntriesAreFetchedOnceAndAnEndlessBookEnds) {
  mail_.entries.assign(20000, {"Someone", "someone@x", false});
  mail_.entries.push_back({"Zoe", "zoe@x", false});
  mail_.batch = 100;
  mail_.endless = true;
  book_.OpenAddressBook("");
  EXPECT_EQ(Place(), "Someone someone@x");
  EXPECT_EQ(mail_.fetches, 1U);
  int steps = 0;
  for (; book_.EndMark() == kFalse; book_.MoveNext()) ++steps;
  EXPECT_EQ(steps, 20001);
  const auto fetches = mail_.fetches;
  EXPECT_EQ(book_.Find("zo"), kTrue);
  EXPECT_EQ(book_.Count(), 20001);
  EXPECT_EQ(mail_.fetches, fetches);
}

TEST_F(AddressBookTest, WhatIsChosenBecomesTheRecipients) {
  server_->AddRecipientTo("Ann <ann@x>, Somebody");
  server_->AddRecipientBcc("\"Bob\" <bob@x>");
  mail_.chosen.to = {{"Cecil", "cecil@x", false}, {"", "dora@x", false}};
  mail_.chosen.cc = {{"Everybody", "", true}, {}};
  book_.OpenAddressBook("");
  mail_.result = {1, "Lost"};
  EXPECT_EQ(FailureOf([&] { book_.ShowAddressBook(); }), "1 Lost");
  EXPECT_EQ(world_.shared.message.to.size(), 2U);
  mail_.result = {};
  book_.ShowAddressBook();
  ASSERT_EQ(mail_.before.to.size(), 2U);
  EXPECT_EQ(mail_.before.to[0].name + "|" + mail_.before.to[0].address, "Ann|ann@x");
  EXPECT_EQ(mail_.before.to[1].name + "|" + mail_.before.to[1].address, "Somebody|");
  EXPECT_EQ(mail_.before.bcc.at(0).name, "Bob");
  const auto& message = world_.shared.message;
  EXPECT_EQ(message.to, (std::vector<std::string>{"Cecil <cecil@x>", "dora@x"}));
  EXPECT_EQ(message.cc, std::vector<std::string>{"Everybody"});
  EXPECT_TRUE(message.bcc.empty());
  EXPECT_EQ(Place(), "Ann ann@x");

  mail_.takesChoice = true;
  book_.MoveLast();
  book_.ShowAddressBook();
  EXPECT_EQ(Place(), "Cecil cecil@x");
  EXPECT_EQ(book_.Count(), 2);
  mail_.chosen.cc.assign(32768, {"x", "y", false});
  mail_.chosen.to.clear();
  EXPECT_EQ(FailureOf([&] { book_.ShowAddressBook(); }), "518 Too many Cc recipients.");
  EXPECT_EQ(message.to.size(), 2U);
}

TEST_F(AddressBookTest, TwoBooksOfOneServerWalkApartAndKeepItAlive) {
  auto second = std::make_unique<AddressBook>();
  second->SetMailObject(server_);
  book_.OpenAddressBook("");
  second->OpenAddressBook("");
  second->MoveLast();
  EXPECT_EQ(Place(), "Ann ann@x");
  const std::weak_ptr<Server> watched = server_;
  server_ = nullptr;
  second = nullptr;
  book_.MoveNext();
  EXPECT_EQ(Place(), "Bob bob@x");
  // Whoever comes meanwhile finds another Server in place of the one that is waited for.
  mail_.during = [this] { book_.SetMailObject(nullptr); };
  EXPECT_EQ(FailureOf([&] { book_.OpenAddressBook(""); }), kClosed);
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(mail_.open, 0);
}

}  // namespace
}  // namespace quillon
