#include "backends/notes/NotesAddressBooks.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "backends/notes/NotesAddressBook.h"
#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "core/AutomationValues.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kDocumentsAtOnce = 50;
// A view that shows nothing but what it has shown already, or never ends, is left.
constexpr std::size_t kMostRepeats = 1000;
constexpr std::size_t kMostDocuments = std::size_t{1} << 20U;

class NotesOpenBook final : public OpenAddressBook {
 public:
  NotesOpenBook(const NotesSession& session, const NotesAddressBooks::Frame& frame,
                AutomationObjectPtr view)
      : session_(session), number_(session.Number()), frame_(frame), view_(std::move(view)) {}

  MailResult Fetch(MailRequest& request, std::vector<AddressEntry>& entries, bool& more) override {
    if (HasEnded()) throw ServerError(error_code::kAddressBookClosed);
    return frame_(request, "Error reading address book (Notes)", [&] { FetchNext(entries, more); });
  }

  bool HasEnded() const override { return session_.Number() != number_; }

 private:
  // After a failure the same entries come again.
  void FetchNext(std::vector<AddressEntry>& entries, bool& more) {
    std::vector<AddressEntry> fetched;
    std::vector<std::string> identifiers;
    auto document = document_;
    bool ended = false;
    for (std::size_t step = 0; step < kDocumentsAtOnce && !ended; ++step) {
      document = Following(document);
      ended = document == nullptr;
      if (!ended) Read(*document, fetched, identifiers);
    }
    document_ = std::move(document);
    repeats_ = identifiers.empty() ? repeats_ + kDocumentsAtOnce : 0;
    seen_.insert(identifiers.begin(), identifiers.end());
    std::move(fetched.begin(), fetched.end(), std::back_inserter(entries));
    more = !ended && repeats_ < kMostRepeats && seen_.size() < kMostDocuments;
  }

  AutomationObjectPtr Following(const AutomationObjectPtr& document) {
    return ObjectOf(document == nullptr ? view_->Call("GetFirstDocument")
                                        : view_->Call("GetNextDocument", Arguments({document})));
  }

  void Read(AutomationObject& document, std::vector<AddressEntry>& fetched,
            std::vector<std::string>& identifiers) const {
    auto identifier = TextOf(document.Get("UniversalID"));
    const auto again = std::find(identifiers.begin(), identifiers.end(), identifier);
    if (again != identifiers.end() || seen_.contains(identifier)) return;
    identifiers.push_back(std::move(identifier));
    if (IsDeleted(document)) return;
    auto entry = ReadNotesEntry(document);
    if (entry.name.empty() && entry.address.empty()) return;
    fetched.push_back({std::move(entry.name), std::move(entry.address),
                       EqualsIgnoreCase(ItemText(document, "Form"), "Group")});
  }

  const NotesSession& session_;
  std::uint64_t number_;
  const NotesAddressBooks::Frame& frame_;
  AutomationObjectPtr view_;
  AutomationObjectPtr document_;  // the last one that was read
  std::unordered_set<std::string> seen_;
  std::size_t repeats_ = 0;
};

// Empty when it cannot be opened.
std::string TitleOf(AutomationObject& book) {
  try {
    if (!TruthOf(book.Get("IsOpen"))) book.Call("Open", Arguments({"", ""}));
    return TextOf(book.Get("Title"));
  } catch (const AutomationError& error) {
    if (IsClientGone(error)) throw;
    return {};
  }
}

std::string PlaceOf(AutomationObject& book) {
  const auto server = PlainName(TextOf(book.Get("Server")));
  return (server.empty() ? server : server + "!!") + TextOf(book.Get("FilePath"));
}

}  // namespace

std::vector<NotesAddressBooks::NamedBook> NotesAddressBooks::Books(const MailRequest& request) {
  session_.MailDatabase(request.instance.postOffice);  // finds out whether the client is there
  std::vector<NamedBook> books;
  for (const auto& element : ElementsOf(session_.Object()->Get("AddressBooks"))) {
    auto object = ObjectOf(element);
    if (object == nullptr) continue;
    auto title = TitleOf(*object);
    books.push_back({std::move(object), std::move(title)});
  }
  std::vector<std::string> titles;
  titles.reserve(books.size());
  for (const auto& book : books) titles.push_back(book.name);
  for (auto& book : books) {
    const auto sameTitle = std::count_if(titles.begin(), titles.end(), [&](const auto& title) {
      return EqualsIgnoreCase(title, book.name);
    });
    if (book.name.empty()) {
      book.name = PlaceOf(*book.object);
    } else if (sameTitle > 1) {
      book.name += " (" + PlaceOf(*book.object) + ")";
    }
  }
  return books;
}

MailResult NotesAddressBooks::Names(MailRequest& request, std::vector<std::string>& names) {
  return frame_(request, "Error listing address books (Notes)", [&] {
    auto books = Books(request);
    names.clear();
    names.reserve(books.size());
    for (auto& book : books) names.push_back(std::move(book.name));
  });
}

MailResult NotesAddressBooks::Open(MailRequest& request, const std::string& name,
                                   std::unique_ptr<OpenAddressBook>& book) {
  return frame_(request, "Error opening address book (Notes) - " + name, [&] {
    const auto books = Books(request);
    const auto found = std::find_if(books.begin(), books.end(), [&](const auto& each) {
      return name.empty() || EqualsIgnoreCase(each.name, name);
    });
    if (found == books.end()) {
      throw NoSuchAddressBook();
    }
    const auto view = RequireNotesObject(OpenUsersView(*found->object),
                                         "The address book has no list of its names.");
    view->Put("AutoUpdate", false);
    book = std::make_unique<NotesOpenBook>(session_, frame_, view);
  });
}

}  // namespace quillon
