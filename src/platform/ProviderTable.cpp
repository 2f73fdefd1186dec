#include "platform/ProviderTable.h"

#include <bit>
#include <deque>
#include <exception>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/ProviderCopy.h"

namespace quillon {

namespace {

// What callbacks answer when the library has to end its call; it may be anything but 0.
constexpr QuillonInt32 kEnd = 1;
// A library that goes on after so many of these never ends by itself.
constexpr int kPatience = 1000;

constexpr std::size_t kMostBooks = 1000;
constexpr std::size_t kMostChosen = 100000;

template <class Record>
Record NewRecord() {
  Record record{};
  record.size = sizeof record;
  return record;
}

QuillonText TextFrom(const std::string& text) {
  return {text.c_str(), static_cast<QuillonUint32>(text.size())};
}

QuillonCall CallFrom(const ProviderCall& call) {
  auto record = NewRecord<QuillonCall>();
  record.session = call.session;
  record.window = std::bit_cast<void*>(static_cast<std::intptr_t>(call.window));
  return record;
}

QuillonParty PartyFrom(const ProviderParty& party) {
  return {party.kind, TextFrom(party.name), TextFrom(party.address)};
}

// Records with lists, which are there as long as the object is.
struct FolderRecord {
  explicit FolderRecord(const ProviderFolder& folder) {
    names.reserve(folder.size());
    for (const auto& name : folder) names.push_back(TextFrom(name));
    record.count = static_cast<QuillonUint32>(names.size());
    record.names = names.data();
  }
  std::vector<QuillonText> names;
  QuillonFolder record = NewRecord<QuillonFolder>();
};

struct MessageRecord {
  explicit MessageRecord(const ProviderMessage& message) {
    recipients.reserve(message.recipients.size());
    for (const auto& one : message.recipients) recipients.push_back(PartyFrom(one));
    files.reserve(message.files.size());
    for (const auto& one : message.files) {
      files.push_back({TextFrom(one.path), TextFrom(one.name)});
    }
    record.flags = (message.receipt ? QUILLON_MESSAGE_RECEIPT : 0U) |
                   (message.sign ? QUILLON_MESSAGE_SIGN : 0U) |
                   (message.encrypt ? QUILLON_MESSAGE_ENCRYPT : 0U) |
                   (message.preventCopying ? QUILLON_MESSAGE_NO_COPYING : 0U);
    record.subject = TextFrom(message.subject);
    record.text = TextFrom(message.text);
    record.type = TextFrom(message.type);
    record.from = PartyFrom(message.from);
    record.replyTo = PartyFrom(message.replyTo);
    record.recipientCount = static_cast<QuillonUint32>(recipients.size());
    record.recipients = recipients.data();
    record.fileCount = static_cast<QuillonUint32>(files.size());
    record.files = files.data();
    record.dateText = TextFrom(message.dateText);
    record.importance = message.importance;
    record.deliveryPriority = message.deliveryPriority;
    record.sensitivity = message.sensitivity;
    record.deliveryReport = message.deliveryReport;
  }
  std::vector<QuillonParty> recipients;
  std::vector<QuillonFile> files;
  QuillonMessage record = NewRecord<QuillonMessage>();
};

// What the callbacks of one call share. Nothing is thrown through the library: it comes out when
// the library has returned.
class Callbacks {
 public:
  explicit Callbacks(const ProviderGuard& guard) : guard_(guard), copy_(guard) {}

  // `body` returns whether to go on, after End when not.
  template <class Body>
  QuillonInt32 Answer(Body&& body) {
    if (ended_) {
      if (++ignored_ > kPatience && guard_.abandon != nullptr) guard_.abandon();
      return kEnd;
    }
    try {
      if (std::forward<Body>(body)()) return QUILLON_SUCCESS;
    } catch (...) {
      failure_ = std::current_exception();
    }
    ended_ = true;
    return kEnd;
  }

  // The result of the call is this one then, whatever the library returns. False, for Answer.
  bool End(std::int32_t result) {
    result_ = result;
    return false;
  }

  std::int32_t Result(std::int32_t ofLibrary) const {
    if (failure_ != nullptr) std::rethrow_exception(failure_);
    return ended_ && ofLibrary != provider::kBroken ? result_ : ofLibrary;
  }

  const ProviderCopy& Copy() const noexcept { return copy_; }

 private:
  const ProviderGuard& guard_;
  const ProviderCopy copy_;
  std::exception_ptr failure_;
  std::int32_t result_ = provider::kSuccess;
  int ignored_ = 0;
  bool ended_ = false;
};

struct ListContext {
  Callbacks callbacks;
  const MailProvider::Found& found;
};

QuillonInt32 QUILLON_CALL OnFound(void* context, const QuillonHeader* given) {
  auto& list = *static_cast<ListContext*>(context);
  return list.callbacks.Answer([&] {
    const auto& copy = list.callbacks.Copy();
    QuillonHeader record;
    ProviderHeader header;
    if (!copy.Copy(given, record) || !copy.Copy(record, header)) {
      return list.callbacks.End(provider::kBadData);
    }
    return list.found(std::move(header));
  });
}

struct ReadContext {
  Callbacks callbacks;
  const MailProvider::NewFile& newFile;
  ProviderMessage& message;
  bool withoutFiles;
  bool hasMessage = false;
  std::deque<std::string> paths = {};  // which the library may look at until it returns
};

QuillonInt32 QUILLON_CALL OnMessage(void* context, const QuillonMessage* given) {
  auto& read = *static_cast<ReadContext*>(context);
  return read.callbacks.Answer([&] {
    const auto& copy = read.callbacks.Copy();
    QuillonMessage record;
    read.hasMessage = copy.Copy(given, record) && copy.Copy(record, read.message);
    return read.hasMessage || read.callbacks.End(provider::kBadData);
  });
}

QuillonInt32 QUILLON_CALL OnNewFile(void* context, const QuillonText* given, QuillonText* path) {
  auto& read = *static_cast<ReadContext*>(context);
  return read.callbacks.Answer([&] {
    if (read.withoutFiles) return false;
    std::string name;
    if (path == nullptr || !read.callbacks.Copy().Copy(given, name)) {
      return read.callbacks.End(provider::kBadData);
    }
    auto made = read.newFile(name);
    if (made.empty()) return read.callbacks.End(provider::kFileNotWritten);
    read.paths.push_back(std::move(made));
    *path = TextFrom(read.paths.back());
    return true;
  });
}

// What a library finds is gathered up to `most`.
template <class Found>
struct GatherContext {
  Callbacks callbacks;
  std::size_t most;
  std::vector<Found> found = {};

  // Takes one that has been copied, or has not.
  bool Take(bool isCopied, Found one) {
    if (!isCopied) return callbacks.End(provider::kBadData);
    found.push_back(std::move(one));
    return found.size() < most;
  }
};
using BooksContext = GatherContext<std::string>;
using EntriesContext = GatherContext<ProviderEntry>;
using ChoiceContext = GatherContext<ProviderParty>;

QuillonInt32 QUILLON_CALL OnBook(void* context, const QuillonText* given) {
  auto& books = *static_cast<BooksContext*>(context);
  return books.callbacks.Answer([&] {
    std::string name;
    const bool isCopied = books.callbacks.Copy().Copy(given, name) && !name.empty();
    return books.Take(isCopied, std::move(name));
  });
}

QuillonInt32 QUILLON_CALL OnEntry(void* context, const QuillonEntry* given) {
  auto& entries = *static_cast<EntriesContext*>(context);
  return entries.callbacks.Answer([&] {
    const auto& copy = entries.callbacks.Copy();
    QuillonEntry record;
    ProviderEntry entry;
    const bool isCopied = copy.Copy(given, record) && copy.Copy(record, entry);
    return entries.Take(isCopied, std::move(entry));
  });
}

QuillonInt32 QUILLON_CALL OnChosen(void* context, const QuillonParty* given) {
  auto& choice = *static_cast<ChoiceContext*>(context);
  return choice.callbacks.Answer([&] {
    std::vector<ProviderParty> party;
    const bool isCopied = choice.callbacks.Copy().Copy(given, 1, party);
    return choice.Take(isCopied, isCopied ? std::move(party.front()) : ProviderParty());
  });
}

struct TextContext {
  Callbacks callbacks;
  std::string text = {};
};

void QUILLON_CALL OnText(void* context, const QuillonText* given) {
  auto& text = *static_cast<TextContext*>(context);
  text.callbacks.Answer([&] { return text.callbacks.Copy().Copy(given, text.text); });
}

}  // namespace

// Everything is copied to where the guarded function finds it, because nothing in its frame may
// need to be destroyed.
template <class... Parameters, class... Arguments>
std::int32_t ProviderTable::Call(QuillonInt32(QUILLON_CALL* function)(Parameters...),
                                 Arguments... arguments) {
  if (table_.Login == nullptr) return provider::kMissing;
  if (function == nullptr) return provider::kNotSupported;
  struct Made {
    QuillonInt32(QUILLON_CALL* function)(Parameters...);
    std::tuple<Parameters...> arguments;
    QuillonInt32 result;
  } made{function, {arguments...}, provider::kBroken};
  const bool returned = guard_.run(
      [](void* context) {
        auto& call = *static_cast<Made*>(context);
        call.result = std::apply(call.function, call.arguments);
      },
      &made);
  return returned ? made.result : provider::kBroken;
}

std::int32_t ProviderTable::Take(decltype(&QuillonProviderGetTable) getTable) {
  struct Asked {
    decltype(&QuillonProviderGetTable) function;
    const QuillonProviderTable* table;
  } asked{getTable, nullptr};
  const bool returned = guard_.run(
      [](void* context) {
        auto& call = *static_cast<Asked*>(context);
        call.table = call.function(QUILLON_PROVIDER_VERSION);
      },
      &asked);
  if (!returned) return provider::kBroken;
  QuillonProviderTable table;
  if (!ProviderCopy(guard_).Copy(asked.table, table) || table.version != QUILLON_PROVIDER_VERSION ||
      table.Login == nullptr) {
    return provider::kOtherVersion;
  }
  table_ = table;
  return provider::kSuccess;
}

std::int32_t ProviderTable::Load(const std::string&) {
  return table_.Login != nullptr ? provider::kSuccess : provider::kMissing;
}

std::int32_t ProviderTable::Login(const ProviderCall& call, const ProviderLogin& login,
                                  std::int32_t& session) {
  const auto callRecord = CallFrom(call);
  auto record = NewRecord<QuillonLogin>();
  record.flags =
      (login.dialog ? QUILLON_LOGIN_DIALOG : 0U) | (login.download ? QUILLON_LOGIN_DOWNLOAD : 0U);
  record.name = TextFrom(login.name);
  record.password = TextFrom(login.password);
  record.postOffice = TextFrom(login.postOffice);
  record.profile = TextFrom(login.profile);
  session = 0;
  const auto result = Call(table_.Login, &callRecord, &record, &session);
  return result == provider::kSuccess && session == 0 ? provider::kBadData : result;
}

std::int32_t ProviderTable::Logout(const ProviderCall& call) {
  const auto callRecord = CallFrom(call);
  const auto result = Call(table_.Logout, &callRecord);
  return result == provider::kNotSupported ? provider::kSuccess : result;
}

std::int32_t ProviderTable::Send(const ProviderCall& call, const ProviderMessage& message) {
  const auto callRecord = CallFrom(call);
  const MessageRecord record(message);
  return Call(table_.Send, &callRecord, &record.record);
}

std::int32_t ProviderTable::List(const ProviderCall& call, const ProviderListing& listing,
                                 const Found& found) {
  const auto callRecord = CallFrom(call);
  const FolderRecord folder(listing.folder);
  ListContext context{Callbacks(guard_), found};
  auto record = NewRecord<QuillonListing>();
  record.flags = (listing.unreadOnly ? QUILLON_LIST_UNREAD : 0U) |
                 (listing.byDate ? QUILLON_LIST_BY_DATE : 0U);
  record.folder = &folder.record;
  record.most = listing.most;
  record.context = &context;
  record.Found = &OnFound;
  return context.callbacks.Result(Call(table_.List, &callRecord, &record));
}

std::int32_t ProviderTable::Read(const ProviderCall& call, const ProviderReading& reading,
                                 ProviderMessage& message, const NewFile& newFile) {
  const auto callRecord = CallFrom(call);
  ReadContext context{Callbacks(guard_), newFile, message, reading.withoutFiles};
  auto record = NewRecord<QuillonReading>();
  record.flags =
      (reading.peek ? QUILLON_READ_PEEK : 0U) | (reading.withoutFiles ? QUILLON_READ_NO_FILES : 0U);
  record.id = TextFrom(reading.id);
  record.context = &context;
  record.Message = &OnMessage;
  record.NewFile = &OnNewFile;
  const auto result = context.callbacks.Result(Call(table_.Read, &callRecord, &record));
  return result == provider::kSuccess && !context.hasMessage ? provider::kBadData : result;
}

std::int32_t ProviderTable::Delete(const ProviderCall& call, const std::string& id) {
  const auto callRecord = CallFrom(call);
  const auto text = TextFrom(id);
  return Call(table_.Delete, &callRecord, &text);
}

std::int32_t ProviderTable::Move(const ProviderCall& call, const std::string& id,
                                 const ProviderFolder& folder) {
  const auto callRecord = CallFrom(call);
  const auto text = TextFrom(id);
  const FolderRecord record(folder);
  return Call(table_.Move, &callRecord, &text, &record.record);
}

std::int32_t ProviderTable::UnreadCount(const ProviderCall& call, const ProviderFolder& folder,
                                        std::uint32_t& count) {
  const auto callRecord = CallFrom(call);
  const FolderRecord record(folder);
  count = 0;
  return Call(table_.UnreadCount, &callRecord, &record.record, &count);
}

std::int32_t ProviderTable::GetSession(const ProviderCall& call, std::int32_t& session) {
  const auto callRecord = CallFrom(call);
  return Call(table_.GetSession, &callRecord, &session);
}

std::int32_t ProviderTable::SetSession(const ProviderCall& call) {
  const auto callRecord = CallFrom(call);
  return Call(table_.SetSession, &callRecord);
}

bool ProviderTable::HasAddressBooks() {
  return table_.Books != nullptr && table_.Entries != nullptr;
}

bool ProviderTable::HasAddressWindow() {
  return table_.ChooseAddresses != nullptr;
}

std::int32_t ProviderTable::Books(const ProviderCall& call, std::vector<std::string>& names) {
  const auto callRecord = CallFrom(call);
  BooksContext context{Callbacks(guard_), kMostBooks};
  auto record = NewRecord<QuillonBooks>();
  record.context = &context;
  record.Found = &OnBook;
  const auto result = context.callbacks.Result(Call(table_.Books, &callRecord, &record));
  names = std::move(context.found);
  return result;
}

std::int32_t ProviderTable::Entries(const ProviderCall& call, const ProviderEntries& part,
                                    std::vector<ProviderEntry>& entries) {
  const auto callRecord = CallFrom(call);
  EntriesContext context{Callbacks(guard_), part.most};
  auto record = NewRecord<QuillonEntries>();
  record.book = TextFrom(part.book);
  record.from = part.from;
  record.most = part.most;
  record.context = &context;
  record.Found = &OnEntry;
  const auto result = context.callbacks.Result(Call(table_.Entries, &callRecord, &record));
  entries = std::move(context.found);
  return result;
}

std::int32_t ProviderTable::ChooseAddresses(const ProviderCall& call,
                                            std::vector<ProviderParty>& parties) {
  const auto callRecord = CallFrom(call);
  std::vector<QuillonParty> before;
  before.reserve(parties.size());
  for (const auto& party : parties) before.push_back(PartyFrom(party));
  ChoiceContext context{Callbacks(guard_), kMostChosen};
  auto record = NewRecord<QuillonChoice>();
  record.partyCount = static_cast<QuillonUint32>(before.size());
  record.parties = before.data();
  record.context = &context;
  record.Chosen = &OnChosen;
  const auto result = context.callbacks.Result(Call(table_.ChooseAddresses, &callRecord, &record));
  if (result == provider::kSuccess) parties = std::move(context.found);
  return result;
}

std::string ProviderTable::ErrorText(std::int32_t number) {
  if (table_.ErrorText == nullptr) return {};
  TextContext context{Callbacks(guard_)};
  struct Asked {
    decltype(table_.ErrorText) function;
    std::int32_t number;
    void* context;
  } asked{table_.ErrorText, number, &context};
  guard_.run(
      [](void* given) {
        const auto& call = *static_cast<Asked*>(given);
        call.function(call.number, call.context, &OnText);
      },
      &asked);
  return context.text;
}

}  // namespace quillon
