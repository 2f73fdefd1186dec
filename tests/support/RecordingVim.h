// A mail program behind VIM: a mailbox in memory, every call recorded, any call failing as told.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/WholeFile.h"
#include "ports/FileSystem.h"
#include "ports/Vim.h"
#include "support/TempFolder.h"

namespace quillon::testing {

class RecordingVim final : public Vim {
 public:
  struct Item {
    Selector itemClass = vim::kNotePart;
    std::string type;
    std::string name;
    std::string content;
  };
  struct Message {
    VimEnvelope envelope;
    VimHeader header;
    std::string folder;  // empty: the inbox
    bool unread = true;
    bool sent = false;
    std::vector<Item> items;
    std::vector<std::pair<Selector, VimRecipient>> recipients;
    std::vector<std::string> settings;  // of one that is sent
  };
  struct Book {
    std::string name;
    std::vector<VimEntry> entries;
  };

  explicit RecordingVim(FileSystem& files) : files_(files) {}

  Status Initialize(const std::string& directory) override {
    return Record("Initialize " + directory);
  }
  Status Terminate() override { return Record("Terminate"); }
  Status GetDefaultSessionInfo(std::string& path, std::string& name) override {
    if (const auto failure = Record("GetDefaultSessionInfo")) return failure;
    path = defaults.path;
    name = defaults.name;
    return vim::kSuccess;
  }
  Status QueryCapability(Selector capability, std::uint32_t& value) override {
    if (const auto failure = Record("QueryCapability " + std::to_string(capability))) {
      return failure;
    }
    value = product;
    return vim::kSuccess;
  }
  Status OpenSession(const std::optional<VimLogin>& login, Handle& session) override {
    const auto given = login ? " " + login->path + "|" + login->name + "|" + login->password : "";
    if (const auto failure = Record("OpenSession" + given)) return failure;
    if (!login && !hasSession) return kLoginFailed;
    return Open(session);
  }
  Status CloseSession(Handle session) override { return Close("CloseSession", session); }

  Status OpenMessageContainer(Handle session, const std::string& name, Handle& container) override {
    if (const auto failure = RecordIn(session, "OpenMessageContainer " + name)) return failure;
    Open(container);
    containers_[container] = name;
    return vim::kSuccess;
  }
  Status CloseMessageContainer(Handle container) override {
    return Close("CloseMessageContainer", container);
  }
  Status EnumerateMessages(Handle container, VimPosition& position, Selector filter,
                           bool unreadOnly, std::vector<VimEnvelope>& messages,
                           bool& more) override {
    const auto call = "EnumerateMessages " + std::to_string(filter) + (unreadOnly ? " unread" : "");
    if (const auto failure = RecordIn(container, call)) return failure;
    std::vector<VimEnvelope> all;
    for (const auto& message : mailbox) {
      if (message.folder == containers_[container] && message.sent == (filter == vim::kSent) &&
          (message.unread || !unreadOnly)) {
        all.push_back(message.envelope);
      }
    }
    return Page(all, position, messages, more);
  }
  Status RemoveMessage(Handle container, VimReference message) override {
    if (const auto failure = RecordIn(container, "RemoveMessage")) return failure;
    mailbox.erase(Find(message));
    return vim::kSuccess;
  }
  Status MarkMessageAsRead(Handle container, VimReference message) override {
    if (const auto failure = RecordIn(container, "MarkMessageAsRead")) return failure;
    Find(message)->unread = false;
    return vim::kSuccess;
  }
  Status QueryUnreadMailCount(Handle container, std::uint32_t& count) override {
    if (const auto failure = RecordIn(container, "QueryUnreadMailCount")) return failure;
    count = unreadCount;
    return vim::kSuccess;
  }
  Status SetMessageCategory(Handle container, VimReference, const std::string& category) override {
    return RecordIn(container, "SetMessageCategory " + category);
  }
  Status RemoveMessageCategory(Handle container, VimReference,
                               const std::string& category) override {
    return RecordIn(container, "RemoveMessageCategory " + category);
  }

  Status OpenMessage(Handle container, VimReference reference, Handle& message) override {
    if (const auto failure = RecordIn(container, "OpenMessage")) return failure;
    const auto found = Find(reference);
    if (found == mailbox.end()) return kInvalidMessage;
    Open(message);
    messages_[message] = *found;
    return vim::kSuccess;
  }
  Status CloseMessage(Handle message) override { return Close("CloseMessage", message); }
  Status GetMessageHeader(Handle message, VimHeader& header) override {
    if (const auto failure = RecordIn(message, "GetMessageHeader")) return failure;
    header = messages_[message].header;
    return vim::kSuccess;
  }
  Status EnumerateMessageItems(Handle message, VimPosition& position, Selector itemClass,
                               std::vector<VimItem>& items, bool& more) override {
    const auto call = "EnumerateMessageItems " + std::to_string(itemClass);
    if (const auto failure = RecordIn(message, call)) return failure;
    std::vector<VimItem> all;
    std::uint32_t number = 0;
    for (const auto& item : messages_[message].items) {
      if (item.itemClass == itemClass)
        all.push_back({{number}, itemClass, item.type, item.name, 0});
      ++number;
    }
    return Page(all, position, items, more);
  }
  Status GetMessageItemText(Handle message, const VimItem& item, std::string& text) override {
    if (const auto failure = RecordIn(message, "GetMessageItemText")) return failure;
    text = messages_[message].items[item.reference.first].content;
    return vim::kSuccess;
  }
  Status GetMessageItemFile(Handle message, const VimItem& item, const std::string& file) override {
    if (const auto failure = RecordIn(message, "GetMessageItemFile")) return failure;
    const auto& content = messages_[message].items[item.reference.first].content;
    return WriteWholeFile(files_, file, BytesOf(content)) ? vim::kSuccess : vim::kWriteFailure;
  }
  Status EnumerateMessageRecipients(Handle message, Selector recipientClass, VimPosition& position,
                                    std::vector<VimRecipient>& recipients, bool& more) override {
    const auto call = "EnumerateMessageRecipients " + std::to_string(recipientClass);
    if (const auto failure = RecordIn(message, call)) return failure;
    std::vector<VimRecipient> all;
    for (const auto& [listed, recipient] : messages_[message].recipients) {
      if (listed == recipientClass) all.push_back(recipient);
    }
    return Page(all, position, recipients, more);
  }

  Status CreateMessage(Handle session, const std::string& type, Handle& message) override {
    if (const auto failure = RecordIn(session, "CreateMessage " + type)) return failure;
    Open(message);
    messages_[message] = {};
    return vim::kSuccess;
  }
  Status SetMessageRecipient(Handle message, Selector recipientClass,
                             const VimRecipient& recipient) override {
    return Set(message, "SetMessageRecipient", recipientClass,
               recipient.name + "|" + recipient.address);
  }
  Status SetMessageHeaderText(Handle message, Selector attribute,
                              const std::string& text) override {
    return Set(message, "SetMessageHeaderText", attribute, text);
  }
  Status SetMessageHeaderFlag(Handle message, Selector attribute, bool value) override {
    return Set(message, "SetMessageHeaderFlag", attribute, value ? "yes" : "no");
  }
  Status SetMessageHeaderNumber(Handle message, Selector attribute, std::uint32_t value) override {
    return Set(message, "SetMessageHeaderNumber", attribute, std::to_string(value));
  }
  Status SetMessageItemText(Handle message, const std::string& text) override {
    return Set(message, "SetMessageItemText", vim::kNotePart, text);
  }
  Status SetMessageItemFile(Handle message, const std::string& name,
                            const std::string& file) override {
    return Set(message, "SetMessageItemFile", vim::kAttach, name + "|" + ContentOf(files_, file));
  }
  Status SendMessage(Handle message) override {
    const auto failure = Close("SendMessage", message);
    open.erase(message);
    if (failure == vim::kSuccess) sent.push_back(messages_[message].settings);
    return failure;
  }

  Status EnumerateAddressBooks(Handle session, VimPosition& position,
                               std::vector<std::string>& names, bool& more) override {
    if (const auto failure = RecordIn(session, "EnumerateAddressBooks")) return failure;
    std::vector<std::string> all;
    for (const auto& book : books) all.push_back(book.name);
    return Page(all, position, names, more);
  }
  Status OpenAddressBook(Handle session, const std::string& name, Handle& book) override {
    if (const auto failure = RecordIn(session, "OpenAddressBook " + name)) return failure;
    const auto isIt = [&](const Book& each) { return each.name == name; };
    if (std::none_of(books.begin(), books.end(), isIt)) return vim::kNameNotFound;
    Open(book);
    containers_[book] = name;
    return vim::kSuccess;
  }
  Status CloseAddressBook(Handle book) override { return Close("CloseAddressBook", book); }
  Status EnumerateAddressBookEntries(Handle book, VimPosition& position,
                                     std::vector<VimEntry>& entries, bool& more) override {
    if (const auto failure = RecordIn(book, "EnumerateAddressBookEntries")) return failure;
    return Page(BookOf(book).entries, position, entries, more);
  }
  Status MatchAddressBook(Handle book, const std::string& name, Selector match,
                          VimReference& entry) override {
    if (const auto failure = RecordIn(book, "MatchAddressBook")) return failure;
    const auto& entries = BookOf(book).entries;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const auto& found = entries[i].name;
      if (match == vim::kFull ? found == name : found.starts_with(name)) {
        entry = {static_cast<std::uint32_t>(i), 0};
        return vim::kSuccess;
      }
    }
    return vim::kNoMatch;
  }
  Status GetABEntryAttributes(Handle book, VimReference reference, VimEntry& entry) override {
    if (const auto failure = RecordIn(book, "GetABEntryAttributes")) return failure;
    entry = BookOf(book).entries[reference.first];
    return vim::kSuccess;
  }

  // The names of the calls so far.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& call : calls) names.push_back(call.substr(0, call.find(' ')));
    return names;
  }

  std::vector<Message> mailbox;
  std::vector<std::vector<std::string>> sent;
  std::vector<Book> books;
  VimLogin defaults;
  bool hasSession = true;  // of the mail program, to share
  std::uint32_t product = vim::kCcMail;
  std::uint32_t unreadCount = 0;
  std::set<Handle> open;
  std::vector<std::string> calls;
  // By a call as it is recorded, or by its name.
  std::map<std::string, Status> failures;
  // Enumerations that say there is more for ever: with pieces at a position that stays, or with
  // none.
  bool standsStill = false;
  bool givesNothing = false;

 private:
  static constexpr Status kInvalidObject = 10;
  static constexpr Status kLoginFailed = 11;
  static constexpr Status kInvalidMessage = 260;

  Status Record(std::string call) {
    while (call.ends_with(' ')) call.pop_back();
    calls.push_back(call);
    for (const auto& name : {call, call.substr(0, call.find(' '))}) {
      const auto found = failures.find(name);
      if (found != failures.end()) return found->second;
    }
    return vim::kSuccess;
  }
  Status RecordIn(Handle object, const std::string& call) {
    const auto failure = Record(call);
    if (failure != vim::kSuccess) return failure;
    return open.contains(object) ? vim::kSuccess : kInvalidObject;
  }
  Status Open(Handle& handle) {
    handle = nextHandle_++;
    open.insert(handle);
    return vim::kSuccess;
  }
  Status Close(const char* call, Handle handle) {
    const auto failure = RecordIn(handle, call);
    if (failure == vim::kSuccess) open.erase(handle);
    return failure;
  }
  Status Set(Handle message, const std::string& call, Selector what, const std::string& value) {
    if (const auto failure = RecordIn(message, call + " " + std::to_string(what))) return failure;
    messages_[message].settings.push_back(std::to_string(what) + " " + value);
    return vim::kSuccess;
  }
  std::vector<Message>::iterator Find(VimReference reference) {
    return std::find_if(mailbox.begin(), mailbox.end(), [&](const Message& message) {
      return message.envelope.reference == reference;
    });
  }
  const Book& BookOf(Handle handle) {
    return *std::find_if(books.begin(), books.end(),
                         [&](const Book& book) { return book.name == containers_[handle]; });
  }
  // Two at a time.
  template <typename Piece>
  Status Page(const std::vector<Piece>& all, VimPosition& position, std::vector<Piece>& pieces,
              bool& more) const {
    for (auto i = position.first; i < all.size() && pieces.size() < 2; ++i) {
      pieces.push_back(all[i]);
    }
    if (givesNothing) pieces.clear();
    if (!standsStill) position.first += 2;
    more = standsStill || givesNothing || position.first < all.size();
    return vim::kSuccess;
  }

  FileSystem& files_;
  Handle nextHandle_ = 41;
  std::map<Handle, std::string> containers_;
  std::map<Handle, Message> messages_;
};

}  // namespace quillon::testing
