#include "platform/win32/Vim32.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "platform/win32/LibrarySearch.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

using vim_record::Attribute;
using vim_record::Bool;
using vim_record::BufferOrFile;
using vim_record::Dword;
using vim_record::Ref;
using vim_record::Selector;
using vim_record::Word;
using Result = vim_record::Status;
using Object = void*;  // a handle of the library

constexpr Dword kVersion = 100;  // 1.00

constexpr Selector kAddress = 1;
constexpr Selector kClass = 13;
constexpr Selector kCp1252 = 16;
constexpr Selector kDate = 19;
constexpr Selector kEntity = 26;
constexpr Selector kFromName = 35;
constexpr Selector kGmt = 37;
constexpr Selector kGroup = 38;
constexpr Selector kName = 53;
constexpr Selector kNative = 55;
constexpr Selector kRecipient = 75;
constexpr Selector kReference = 76;
constexpr Selector kType = 98;

constexpr Dword kUnreadOnly = 1;
constexpr vim::Status kAttachmentNotFound = 4;

// Whether the status of a request for an attribute says that there is none.
bool MeansMissing(vim::Status status) {
  constexpr std::array<vim::Status, 5> kSaySo{5, 6, 12, 16, 21};
  return std::find(kSaySo.begin(), kSaySo.end(), status) != kSaySo.end();
}

constexpr char kText[] = "VIM_TEXT";

// Of a text attribute, bytes with its end.
constexpr std::size_t kTextRoom = 0x7FFF;
constexpr Word kPathRoom = 1024;
// A text that the library says is longer is not believed.
constexpr Dword kLongestText = 256U << 20U;
constexpr Word kItemsAtOnce = 16;

// The types of the functions, by which a call is made.
using PlainType = Result(WINAPI*)();
using HandleType = Result(WINAPI*)(Object);
using SessionInfoType = Result(WINAPI*)(Word, char*, Word, char*);
using CapabilityType = Result(WINAPI*)(Selector, Word, void*);
using OpenSessionType = Result(WINAPI*)(char*, char*, char*, Dword, Selector, Object*);
using OpenNamedType = Result(WINAPI*)(Object, char*, Object*);
using MessagesType = Result(WINAPI*)(Object, Ref*, std::int32_t, Word, Attribute*, Word*, Selector,
                                     void*, Dword, Bool*);
using MessageType = Result(WINAPI*)(Object, Ref);
using CountType = Result(WINAPI*)(Object, Dword*);
using CategoryType = Result(WINAPI*)(Object, Ref, char*);
using OpenMessageType = Result(WINAPI*)(Object, Ref, char*, Object*);
using GetHeaderType = Result(WINAPI*)(Object, Word, Attribute*);
using ItemsType = Result(WINAPI*)(Object, Ref*, std::int32_t, Word*, vim_record::Item*, Selector,
                                  void*, Bool*);
using GetItemType = Result(WINAPI*)(Object, Ref, char*, Selector, BufferOrFile*);
using RecipientsType = Result(WINAPI*)(Object, Selector, Ref*, std::int32_t, Word, Attribute*,
                                       Word*, Bool*);
using SetHeaderType = Result(WINAPI*)(Object, Selector, Word, void*);
using SetRecipientType = Result(WINAPI*)(Object, Selector, vim_record::Recipient*);
using SetItemType = Result(WINAPI*)(Object, Selector, char*, Selector, char*, BufferOrFile*);
using SendType = Result(WINAPI*)(Object, void*, void*);
using BooksType = Result(WINAPI*)(Object, Ref*, std::int32_t, Word, Attribute*, Word*, Bool*);
using EntriesType = Result(WINAPI*)(Object, Ref, char*, Ref*, std::int32_t, Word, Attribute*, Word*,
                                    Selector, void*, Bool*);
using MatchType = Result(WINAPI*)(Object, Ref, char*, Selector, void*, Selector, Ref*, Ref*);
using EntryType = Result(WINAPI*)(Object, Ref, char*, Word, Attribute*);

Object Native(vim::Handle handle) {
  return reinterpret_cast<Object>(static_cast<std::uintptr_t>(handle));
}
vim::Handle Number(Object handle) {
  return static_cast<vim::Handle>(reinterpret_cast<std::uintptr_t>(handle));
}
Ref Native(VimReference reference) {
  return {reference.first, reference.second};
}
VimReference Plain(Ref reference) {
  return {reference.first, reference.second};
}
char* OrNull(std::string& text) {
  return text.empty() ? nullptr : text.data();
}

using TextBuffer = std::array<char, kTextRoom>;

Attribute TextAttribute(Selector selector, TextBuffer& buffer) {
  return {selector, static_cast<Dword>(buffer.size()), buffer.data()};
}
template <class Record>
Attribute RecordAttribute(Selector selector, Record& record) {
  return {selector, static_cast<Dword>(sizeof record), &record};
}

constexpr int ByteOf(Dword number, unsigned index) {
  return static_cast<int>((number >> (8 * index)) & 0xFF);
}

VimDate PlainDate(const vim_record::Date& record) {
  VimDate date;
  if (record.date == 0xFFFFFFFF) return date;
  const int month = ByteOf(record.date, 1);
  const int day = ByteOf(record.date, 0);
  if (month < 1 || month > 12 || day < 1 || day > 31) return date;
  date = {static_cast<int>(record.date >> 16U), month, day, 0, 0, 0, record.zone == kGmt};
  const int hour = ByteOf(record.time, 3);
  const int minute = ByteOf(record.time, 2);
  const int second = ByteOf(record.time, 1);
  if (hour > 23 || minute > 59 || second > 59) return date;
  date.hour = hour;
  date.minute = minute;
  date.second = second;
  return date;
}

// False when the text is cut off: then it would name somebody else.
template <std::size_t Room>
bool Fill(char (&field)[Room], const std::string& bytes) {
  if (bytes.size() >= Room) return false;
  std::memcpy(field, bytes.data(), bytes.size());
  return true;
}

}  // namespace

template <class... Parameters, class... Arguments>
vim::Status Vim32::Call(const char* function, vim_record::Status(WINAPI* type)(Parameters...),
                        Arguments... arguments) {
  return library_.Call(function, type, vim::kNotSupported, vim::kFatal, arguments...);
}

std::string Vim32::Text(const char* bytes, std::size_t room) const {
  return codePage_.ToText({bytes, strnlen(bytes, room)});
}

std::string Vim32::PathBytes(const std::string& path) const {
  auto bytes = codePage_.ToBytes(path);
  if (codePage_.ToText(bytes) == path) return bytes;
  const auto wide = WideFromUtf8(path);
  std::array<wchar_t, MAX_PATH> shortForm{};
  const DWORD length = GetShortPathNameW(wide.c_str(), shortForm.data(), MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return {};
  const auto text = Utf8FromWide({shortForm.data(), length});
  bytes = codePage_.ToBytes(text);
  return codePage_.ToText(bytes) == text ? bytes : std::string();
}

vim::Status Vim32::Initialize(const std::string& directory) {
  const LibraryDirectory place(WideFromUtf8(directory));
  if (!(directory.empty() ? library_.Load() : library_.LoadFrom(place))) {
    return vim::kInvalidConfiguration;
  }
  return Call("VIMInitialize", PlainType{});
}

vim::Status Vim32::Terminate() {
  return Call("VIMTerminate", PlainType{});
}

vim::Status Vim32::GetDefaultSessionInfo(std::string& path, std::string& name) {
  std::array<char, kPathRoom> pathBytes{};
  std::array<char, kPathRoom> nameBytes{};
  const auto status = Call("VIMGetDefaultSessionInfo", SessionInfoType{}, kPathRoom,
                           pathBytes.data(), kPathRoom, nameBytes.data());
  if (status == vim::kSuccess) {
    path = Text(pathBytes.data(), pathBytes.size());
    name = Text(nameBytes.data(), nameBytes.size());
  }
  return status;
}

vim::Status Vim32::QueryCapability(Selector capability, std::uint32_t& value) {
  Dword answer = 0;
  const auto status = Call("VIMQueryCapability", CapabilityType{}, capability, Word{sizeof answer},
                           static_cast<void*>(&answer));
  value = answer;
  return status;
}

vim::Status Vim32::OpenSession(const std::optional<VimLogin>& login, Handle& session) {
  const auto given = login.value_or(VimLogin());
  auto path = codePage_.ToBytes(given.path);
  auto name = codePage_.ToBytes(given.name);
  auto password = codePage_.ToBytes(given.password);
  Object opened = nullptr;
  const auto status = Call("VIMOpenSession", OpenSessionType{}, OrNull(path), OrNull(name),
                           OrNull(password), kVersion, kCp1252, &opened);
  session = Number(opened);
  return status;
}

vim::Status Vim32::CloseSession(Handle session) {
  return Call("VIMCloseSession", HandleType{}, Native(session));
}

vim::Status Vim32::OpenMessageContainer(Handle session, const std::string& name,
                                        Handle& container) {
  auto bytes = codePage_.ToBytes(name);
  Object opened = nullptr;
  const auto status =
      Call("VIMOpenMessageContainer", OpenNamedType{}, Native(session), OrNull(bytes), &opened);
  container = Number(opened);
  return status;
}

vim::Status Vim32::CloseMessageContainer(Handle container) {
  return Call("VIMCloseMessageContainer", HandleType{}, Native(container));
}

vim::Status Vim32::EnumerateMessages(Handle container, VimPosition& position, Selector filter,
                                     bool unreadOnly, std::vector<VimEnvelope>& messages,
                                     bool& more) {
  const auto from = std::make_unique<TextBuffer>();
  const auto subject = std::make_unique<TextBuffer>();
  vim_record::Date date;
  Ref reference;
  std::array attributes{RecordAttribute(kReference, reference), RecordAttribute(kDate, date),
                        TextAttribute(kFromName, *from), TextAttribute(vim::kSubject, *subject)};
  Ref at = Native(position);
  Word count = 1;
  Bool left = 0;
  const auto status = Call("VIMEnumerateMessages", MessagesType{}, Native(container), &at, 1,
                           Word{4}, attributes.data(), &count, filter, static_cast<void*>(nullptr),
                           unreadOnly ? kUnreadOnly : Dword{0}, &left);
  messages.clear();
  more = left != 0;
  position = Plain(at);
  if (status == vim::kSuccess && count != 0) {
    messages.push_back({Plain(reference), PlainDate(date), Text(from->data(), from->size()),
                        Text(subject->data(), subject->size())});
  }
  return status;
}

vim::Status Vim32::RemoveMessage(Handle container, VimReference message) {
  return Call("VIMRemoveMessage", MessageType{}, Native(container), Native(message));
}

vim::Status Vim32::MarkMessageAsRead(Handle container, VimReference message) {
  return Call("VIMMarkMessageAsRead", MessageType{}, Native(container), Native(message));
}

vim::Status Vim32::QueryUnreadMailCount(Handle container, std::uint32_t& count) {
  Dword answer = 0;
  const auto status = Call("VIMQueryUnreadMailCount", CountType{}, Native(container), &answer);
  count = answer;
  return status;
}

vim::Status Vim32::SetMessageCategory(Handle container, VimReference message,
                                      const std::string& category) {
  auto bytes = codePage_.ToBytes(category);
  return Call("VIMSetMessageCategory", CategoryType{}, Native(container), Native(message),
              bytes.data());
}

vim::Status Vim32::RemoveMessageCategory(Handle container, VimReference message,
                                         const std::string& category) {
  auto bytes = codePage_.ToBytes(category);
  return Call("VIMRemoveMessageCategory", CategoryType{}, Native(container), Native(message),
              bytes.data());
}

vim::Status Vim32::OpenMessage(Handle container, VimReference reference, Handle& message) {
  Object opened = nullptr;
  const auto status = Call("VIMOpenMessage", OpenMessageType{}, Native(container),
                           Native(reference), static_cast<char*>(nullptr), &opened);
  message = Number(opened);
  return status;
}

vim::Status Vim32::CloseMessage(Handle message) {
  return Call("VIMCloseMessage", HandleType{}, Native(message));
}

vim::Status Vim32::GetMessageHeader(Handle message, VimHeader& header) {
  auto status = HeaderText(message, header);
  if (status == vim::kSuccess) status = HeaderNumber(message, vim::kPriority, header.priority);
  std::uint32_t receipt = 0;
  if (status == vim::kSuccess) status = HeaderNumber(message, vim::kReturnReceipt, receipt);
  header.returnReceipt = receipt != 0;
  return status;
}

vim::Status Vim32::HeaderText(Handle message, VimHeader& header) {
  const auto from = std::make_unique<TextBuffer>();
  const auto subject = std::make_unique<TextBuffer>();
  vim_record::Date date;
  std::array attributes{RecordAttribute(kDate, date), TextAttribute(kFromName, *from),
                        TextAttribute(vim::kSubject, *subject)};
  const auto status =
      Call("VIMGetMessageHeader", GetHeaderType{}, Native(message), Word{3}, attributes.data());
  if (status == vim::kSuccess) {
    header.date = PlainDate(date);
    header.fromName = Text(from->data(), from->size());
    header.subject = Text(subject->data(), subject->size());
  }
  return status;
}

// Not every message, nor every library, has these: then the value stays as it is.
vim::Status Vim32::HeaderNumber(Handle message, Selector attribute, std::uint32_t& value) {
  Word answer = 0;
  auto wanted = RecordAttribute(attribute, answer);
  const auto status =
      Call("VIMGetMessageHeader", GetHeaderType{}, Native(message), Word{1}, &wanted);
  if (status == vim::kSuccess) value = answer;
  return MeansMissing(status) ? vim::kSuccess : status;
}

vim::Status Vim32::EnumerateMessageItems(Handle message, VimPosition& position, Selector itemClass,
                                         std::vector<VimItem>& items, bool& more) {
  std::vector<vim_record::Item> records(kItemsAtOnce);
  Ref at = Native(position);
  Word count = kItemsAtOnce;
  Bool left = 0;
  const auto status = Call("VIMEnumerateMessageItems", ItemsType{}, Native(message), &at, 1, &count,
                           records.data(), kClass, static_cast<void*>(&itemClass), &left);
  items.clear();
  more = left != 0;
  position = Plain(at);
  if (status != vim::kSuccess) return status;
  records.resize(std::min(count, kItemsAtOnce));
  for (const auto& record : records) {
    items.push_back({Plain(record.reference), record.itemClass,
                     Text(record.type, sizeof record.type), Text(record.name, sizeof record.name),
                     record.size});
  }
  return status;
}

vim::Status Vim32::GetMessageItemText(Handle message, const VimItem& item, std::string& text) {
  text.clear();
  if (item.size == 0) return vim::kSuccess;
  if (item.size > kLongestText) return vim::kInsufficientMemory;
  std::string bytes;
  try {
    bytes.resize(item.size);
  } catch (const std::bad_alloc&) {
    return vim::kInsufficientMemory;
  }
  std::array<char, sizeof kText> type{};
  std::copy(std::begin(kText), std::end(kText), type.begin());
  BufferOrFile room{item.size, bytes.data(), 0, nullptr};
  const auto status = Call("VIMGetMessageItem", GetItemType{}, Native(message),
                           Native(item.reference), type.data(), Selector{0}, &room);
  if (status == vim::kSuccess) text = Text(bytes.data(), std::min(room.size, item.size));
  return status;
}

vim::Status Vim32::GetMessageItemFile(Handle message, const VimItem& item,
                                      const std::string& file) {
  auto path = PathBytes(file);
  if (path.empty()) return vim::kWriteFailure;
  BufferOrFile place{0, nullptr, 0, path.data()};
  return Call("VIMGetMessageItem", GetItemType{}, Native(message), Native(item.reference),
              static_cast<char*>(nullptr), kNative, &place);
}

vim::Status Vim32::EnumerateMessageRecipients(Handle message, Selector recipientClass,
                                              VimPosition& position,
                                              std::vector<VimRecipient>& recipients, bool& more) {
  const auto record = std::make_unique<vim_record::Recipient>();
  auto wanted = RecordAttribute(kRecipient, *record);
  Ref at = Native(position);
  Word count = 1;
  Bool left = 0;
  const auto status = Call("VIMEnumerateMessageRecipients", RecipientsType{}, Native(message),
                           recipientClass, &at, 1, Word{1}, &wanted, &count, &left);
  recipients.clear();
  more = left != 0;
  position = Plain(at);
  if (status == vim::kSuccess && count != 0) {
    recipients.push_back({Text(record->name.value, sizeof record->name.value),
                          Text(record->address.value, sizeof record->address.value)});
  }
  return status;
}

vim::Status Vim32::CreateMessage(Handle session, const std::string& type, Handle& message) {
  auto bytes = codePage_.ToBytes(type);
  Object created = nullptr;
  const auto status =
      Call("VIMCreateMessage", OpenNamedType{}, Native(session), bytes.data(), &created);
  message = Number(created);
  return status;
}

vim::Status Vim32::SetMessageRecipient(Handle message, Selector recipientClass,
                                       const VimRecipient& recipient) {
  const auto record = std::make_unique<vim_record::Recipient>();
  record->type = kEntity;
  record->name.type = kNative;
  record->address.type = kNative;
  if (!Fill(record->name.value, codePage_.ToBytes(recipient.name)) ||
      !Fill(record->address.value, codePage_.ToBytes(recipient.address))) {
    return vim::kBadParameter;
  }
  return Call("VIMSetMessageRecipient", SetRecipientType{}, Native(message), recipientClass,
              record.get());
}

vim::Status Vim32::SetMessageHeaderText(Handle message, Selector attribute,
                                        const std::string& text) {
  auto bytes = codePage_.ToBytes(text);
  if (bytes.size() > kTextRoom) return vim::kBadParameter;
  return Call("VIMSetMessageHeader", SetHeaderType{}, Native(message), attribute,
              static_cast<Word>(bytes.size()), static_cast<void*>(bytes.data()));
}

vim::Status Vim32::SetMessageHeaderFlag(Handle message, Selector attribute, bool value) {
  return SetMessageHeaderNumber(message, attribute, value ? 1 : 0);
}

vim::Status Vim32::SetMessageHeaderNumber(Handle message, Selector attribute, std::uint32_t value) {
  auto word = static_cast<Word>(value);
  return Call("VIMSetMessageHeader", SetHeaderType{}, Native(message), attribute, Word{sizeof word},
              static_cast<void*>(&word));
}

vim::Status Vim32::SetMessageItemText(Handle message, const std::string& text) {
  auto bytes = codePage_.ToBytes(text);
  std::string type = kText;
  std::string title;
  BufferOrFile content{static_cast<Dword>(bytes.size()), bytes.data(), 0, nullptr};
  return Call("VIMSetMessageItem", SetItemType{}, Native(message), vim::kNotePart, type.data(),
              Selector{0}, title.data(), &content);
}

vim::Status Vim32::SetMessageItemFile(Handle message, const std::string& name,
                                      const std::string& file) {
  auto path = PathBytes(file);
  if (path.empty()) return kAttachmentNotFound;
  auto shown = codePage_.ToBytes(name);
  BufferOrFile content{0, nullptr, 0, path.data()};
  return Call("VIMSetMessageItem", SetItemType{}, Native(message), vim::kAttach,
              static_cast<char*>(nullptr), kNative, shown.data(), &content);
}

vim::Status Vim32::SendMessage(Handle message) {
  return Call("VIMSendMessage", SendType{}, Native(message), static_cast<void*>(nullptr),
              static_cast<void*>(nullptr));
}

vim::Status Vim32::EnumerateAddressBooks(Handle session, VimPosition& position,
                                         std::vector<std::string>& names, bool& more) {
  const auto name = std::make_unique<TextBuffer>();
  auto wanted = TextAttribute(kName, *name);
  Ref at = Native(position);
  Word count = 1;
  Bool left = 0;
  const auto status = Call("VIMEnumerateAddressBooks", BooksType{}, Native(session), &at, 1,
                           Word{1}, &wanted, &count, &left);
  names.clear();
  more = left != 0;
  position = Plain(at);
  if (status == vim::kSuccess && count != 0) names.push_back(Text(name->data(), name->size()));
  return status;
}

vim::Status Vim32::OpenAddressBook(Handle session, const std::string& name, Handle& book) {
  auto bytes = codePage_.ToBytes(name);
  Object opened = nullptr;
  const auto status =
      Call("VIMOpenAddressBook", OpenNamedType{}, Native(session), bytes.data(), &opened);
  book = Number(opened);
  return status;
}

vim::Status Vim32::CloseAddressBook(Handle book) {
  return Call("VIMCloseAddressBook", HandleType{}, Native(book));
}

// Not every entry, nor every library, has an address or a kind: then it is asked for the same entry
// with less.
vim::Status Vim32::EnumerateAddressBookEntries(Handle book, VimPosition& position,
                                               std::vector<VimEntry>& entries, bool& more) {
  const auto name = std::make_unique<TextBuffer>();
  const auto address = std::make_unique<vim_record::Address>();
  Selector type = 0;
  std::array attributes{TextAttribute(kName, *name), RecordAttribute(kType, type),
                        RecordAttribute(kAddress, *address)};
  Ref at;
  Word count = 0;
  Bool left = 0;
  auto status = vim::kNotSupported;
  for (Word asked = 3; asked > 0; --asked) {
    at = Native(position);
    count = 1;
    status = Call("VIMEnumerateAddressBookEntries", EntriesType{}, Native(book), vim_record::kRoot,
                  static_cast<char*>(nullptr), &at, 1, asked, attributes.data(), &count,
                  vim::kNoFilter, static_cast<void*>(nullptr), &left);
    if (!MeansMissing(status)) break;
    *address = {};
    type = 0;
  }
  entries.clear();
  more = left != 0;
  position = Plain(at);
  if (status == vim::kSuccess && count != 0) {
    entries.push_back({Text(name->data(), name->size()),
                       Text(address->value, sizeof address->value), type == kGroup});
  }
  return status;
}

vim::Status Vim32::MatchAddressBook(Handle book, const std::string& name, Selector match,
                                    VimReference& entry) {
  auto bytes = codePage_.ToBytes(name);
  Ref found;
  Ref position;
  const auto status = Call("VIMMatchAddressBook", MatchType{}, Native(book), vim_record::kRoot,
                           static_cast<char*>(nullptr), kName, static_cast<void*>(bytes.data()),
                           match, &found, &position);
  entry = Plain(found);
  return status;
}

vim::Status Vim32::GetABEntryAttributes(Handle book, VimReference reference, VimEntry& entry) {
  const auto name = std::make_unique<TextBuffer>();
  auto wanted = TextAttribute(kName, *name);
  const auto get = [&] {
    return Call("VIMGetABEntryAttributes", EntryType{}, Native(book), Native(reference),
                static_cast<char*>(nullptr), Word{1}, &wanted);
  };
  const auto status = get();
  if (status != vim::kSuccess) return status;
  entry.name = Text(name->data(), name->size());
  // An entry without an address is one of the same post office.
  const auto address = std::make_unique<vim_record::Address>();
  wanted = RecordAttribute(kAddress, *address);
  const auto known = get();
  if (known == vim::kSuccess) entry.address = Text(address->value, sizeof address->value);
  return MeansMissing(known) ? vim::kSuccess : known;
}

}  // namespace quillon
