#include "addressbook/AddressBook.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "backends/RecipientParts.h"
#include "core/Text.h"
#include "server/ErrorTable.h"

namespace quillon {

namespace {

constexpr std::int16_t kItemNames = 1;
constexpr std::int16_t kItemAddresses = 2;

constexpr std::int16_t kPerson = 0;
constexpr std::int16_t kGroup = 1;

// The counts of recipients are short integers.
constexpr std::size_t kMostRecipients = std::numeric_limits<std::int16_t>::max();

std::vector<AddressEntry> EntriesOf(const std::vector<std::string>& recipients) {
  std::vector<AddressEntry> entries;
  entries.reserve(recipients.size());
  for (const auto& recipient : recipients) {
    auto [name, address] = SplitRecipient(recipient);
    entries.push_back({std::move(name), std::move(address), false});
  }
  return entries;
}

std::vector<std::string> RecipientsOf(const std::vector<AddressEntry>& entries,
                                      std::int32_t fullCode) {
  if (entries.size() > kMostRecipients) throw ServerError(fullCode);
  std::vector<std::string> recipients;
  recipients.reserve(entries.size());
  for (const auto& entry : entries) {
    if (entry.name.empty() && entry.address.empty()) continue;
    recipients.push_back(entry.name.empty() ? entry.address
                                            : FormatRecipient(entry.name, entry.address));
  }
  return recipients;
}

void PutChoice(const AddressChoice& choice, MessageBuffers& message) {
  auto to = RecipientsOf(choice.to, error_code::kTooManyTo);
  auto cc = RecipientsOf(choice.cc, error_code::kTooManyCc);
  auto bcc = RecipientsOf(choice.bcc, error_code::kTooManyBcc);
  message.to = std::move(to);
  message.cc = std::move(cc);
  message.bcc = std::move(bcc);
}

// The name as the mail system spells it.
MailResult FindBook(AddressBooks& books, MailRequest& request, std::string& name) {
  std::vector<std::string> names;
  auto result = books.Names(request, names);
  if (!result.Succeeded()) return result;
  const auto found = std::find_if(names.begin(), names.end(), [&](const auto& candidate) {
    return EqualsIgnoreCase(candidate, name);
  });
  if (found == names.end()) throw NoSuchAddressBook();
  name = *found;
  return result;
}

}  // namespace

void AddressBook::SetMailObject(std::shared_ptr<Server> server) {
  if (server == server_) return;
  // The last thing to happen here: a Server that goes may shut its mail system down.
  const auto book = std::exchange(open_, nullptr);
  server_.swap(server);
}

const std::shared_ptr<Server>& AddressBook::RequireServer() const {
  if (server_ == nullptr) {
    throw ServerError(error_code::kNoMailObject, ErrorText(error_code::kNoMailObject));
  }
  return server_;
}

void AddressBook::WithBooks(const char* member, MemberKind kind,
                            const Server::AddressBookCall& call) const {
  const auto server = RequireServer();
  server->WithAddressBooks(member, kind, call);
}

bool AddressBook::StillOpen(const AddressBooks& books, const MailRequest& request) const {
  const auto& now = request.instance;
  const auto& then = *open_;
  return &books == then.books && now.mailSystem == then.system && !then.walk.HasEnded() &&
         now.session.handle == then.session.handle && now.session.loggedIn == then.session.loggedIn;
}

void AddressBook::WithWalk(const char* member, MemberKind kind, const WalkCall& call) {
  WithBooks(member, kind, [&](AddressBooks& books, MailRequest& request) {
    if (open_ != nullptr && !StillOpen(books, request)) open_ = nullptr;
    const auto open = open_;
    if (open == nullptr) throw ServerError(error_code::kAddressBookClosed);
    try {
      return call(open->walk, request);
    } catch (const ServerError& error) {
      if (error.Code() == error_code::kAddressBookClosed && open_ == open) open_ = nullptr;
      throw;
    }
  });
}

void AddressBook::OpenAddressBook(const std::string& bookName) {
  const auto server = RequireServer();
  server->WithAddressBooks(
      "OpenAddressBook", MemberKind::Method, [&](AddressBooks& books, MailRequest& request) {
        auto name = TrimmedCopy(bookName);
        MailResult result;
        if (!name.empty()) result = FindBook(books, request, name);
        std::unique_ptr<quillon::OpenAddressBook> book;
        if (result.Succeeded()) result = books.Open(request, name, book);
        if (!result.Succeeded()) return result;
        if (server != server_) throw ServerError(error_code::kAddressBookClosed);
        const auto& instance = request.instance;
        open_ = std::make_shared<Open>(
            Open{AddressWalk(std::move(book)), &books, instance.mailSystem, instance.session});
        return result;
      });
}

void AddressBook::CloseAddressBook() {
  WithWalk("CloseAddressBook", MemberKind::Method, [this](AddressWalk&, MailRequest&) {
    open_ = nullptr;
    return MailResult();
  });
}

void AddressBook::Move(const char* member, MailResult (AddressWalk::*step)(MailRequest&)) {
  WithWalk(member, MemberKind::Method,
           [step](AddressWalk& walk, MailRequest& request) { return (walk.*step)(request); });
}

void AddressBook::MoveFirst() {
  Move("MoveFirst", &AddressWalk::MoveFirst);
}
void AddressBook::MoveNext() {
  Move("MoveNext", &AddressWalk::MoveNext);
}
void AddressBook::MoveLast() {
  Move("MoveLast", &AddressWalk::MoveLast);
}
void AddressBook::MovePrevious() {
  Move("MovePrevious", &AddressWalk::MovePrevious);
}

ShortBool AddressBook::Find(const std::string& beginning) {
  bool found = false;
  WithWalk("Find", MemberKind::Method, [&](AddressWalk& walk, MailRequest& request) {
    return walk.Find(request, beginning, found);
  });
  return ToShortBool(found);
}

AddressEntry AddressBook::Entry(const char* member) {
  AddressEntry current;
  WithWalk(member, MemberKind::Property, [&](AddressWalk& walk, MailRequest& request) {
    const AddressEntry* entry = nullptr;
    auto result = walk.Current(request, entry);
    if (entry != nullptr) current = *entry;
    return result;
  });
  return current;
}

std::string AddressBook::Name() {
  return Entry("Name").name;
}

std::string AddressBook::Address() {
  return Entry("Address").address;
}

std::int16_t AddressBook::EntryType() {
  return Entry("EntryType").isGroup ? kGroup : kPerson;
}

ShortBool AddressBook::Mark(const char* member, bool before) {
  bool isBefore = false;
  bool isBehind = false;
  WithWalk(member, MemberKind::Property, [&](AddressWalk& walk, MailRequest& request) {
    return walk.Marks(request, isBefore, isBehind);
  });
  return ToShortBool(before ? isBefore : isBehind);
}

ShortBool AddressBook::BeginMark() {
  return Mark("BOF", true);
}

ShortBool AddressBook::EndMark() {
  return Mark("EOF", false);
}

std::int32_t AddressBook::Count() {
  std::size_t count = 0;
  WithWalk("Count", MemberKind::Property, [&](AddressWalk& walk, MailRequest& request) {
    const std::vector<AddressEntry>* entries = nullptr;
    auto result = walk.All(request, entries);
    count = entries->size();
    return result;
  });
  return static_cast<std::int32_t>(count);
}

std::vector<std::string> AddressBook::GetAddressBookItems(std::int16_t itemType) {
  std::vector<std::string> texts;
  WithWalk("GetAddressBookItems", MemberKind::Method, [&](AddressWalk& walk, MailRequest& request) {
    if (itemType != kItemNames && itemType != kItemAddresses) {
      throw ServerError(error_code::kInvalidValue, "Invalid parameter.");
    }
    const std::vector<AddressEntry>* entries = nullptr;
    auto result = walk.All(request, entries);
    if (!result.Succeeded()) return result;
    texts.reserve(entries->size());
    for (const auto& entry : *entries) {
      texts.push_back(itemType == kItemNames ? entry.name : entry.address);
    }
    return result;
  });
  return texts;
}

std::vector<std::string> AddressBook::BookNames() {
  std::vector<std::string> names;
  WithBooks("BookNames", MemberKind::Property,
            [&](AddressBooks& books, MailRequest& request) { return books.Names(request, names); });
  return names;
}

Value AddressBook::SessionHandle() {
  const auto server = RequireServer();
  return server->Get(Property::sessionHandle);
}

void AddressBook::ShowAddressBook() {
  WithBooks("ShowAddressBook", MemberKind::Method, [&](AddressBooks& books, MailRequest& request) {
    auto& message = request.shared.message;
    AddressChoice choice{EntriesOf(message.to), EntriesOf(message.cc), EntriesOf(message.bcc)};
    auto result = books.Show(request, choice);
    if (!result.Succeeded()) return result;
    PutChoice(choice, message);
    if (open_ != nullptr && StillOpen(books, request)) open_->walk.TakeChoice(choice);
    return result;
  });
}

}  // namespace quillon
