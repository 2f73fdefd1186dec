// VIM 1.00 (Vendor Independent Messaging) as the workstation's vim32.dll offers it, in plain
// records. All texts are UTF-8; the library's own layout and code page belong to the
// implementation.
//
// Each member is the function of that name and returns its whole status: 0 for success,
// kNotSupported also when the library has no such function, kFatal when it broke down,
// kInvalidConfiguration when the library is missing. Handles are 0 for none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillon {

// Published numbers of the interface.
namespace vim {

using Status = std::uint32_t;
using Handle = std::uint32_t;
using Selector = std::uint32_t;

inline constexpr Status kSuccess = 0;
inline constexpr Status kFatal = 2;
inline constexpr Status kBadParameter = 5;
inline constexpr Status kInsufficientMemory = 8;
inline constexpr Status kInvalidConfiguration = 9;
inline constexpr Status kInvalidSelector = 12;
inline constexpr Status kNameNotFound = 15;
inline constexpr Status kNotSupported = 16;
inline constexpr Status kNoDefault = 18;
inline constexpr Status kNoMatch = 19;
inline constexpr Status kNoSuchAttribute = 21;
inline constexpr Status kWriteFailure = 27;

inline constexpr Selector kAttach = 6;  // classes of message items
inline constexpr Selector kNotePart = 62;

inline constexpr Selector kBcc = 9;  // classes of recipients
inline constexpr Selector kCc = 10;
inline constexpr Selector kTo = 97;

inline constexpr Selector kDeliveryReport = 21;  // header attributes of an outgoing message
inline constexpr Selector kNondeliveryReport = 60;
inline constexpr Selector kPriority = 71;
inline constexpr Selector kReturnReceipt = 79;
inline constexpr Selector kSave = 81;
inline constexpr Selector kSubject = 91;

inline constexpr Selector kProduct = 72;  // capabilities
inline constexpr Selector kNotes = 63;    // values of kProduct
inline constexpr Selector kCcMail = 11;

inline constexpr Selector kNoFilter = 58;  // filters of VIMEnumerateMessages
inline constexpr Selector kSent = 83;

inline constexpr Selector kFull = 36;  // kinds of matches in an address book
inline constexpr Selector kPartial = 67;

}  // namespace vim

struct VimReference {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  bool operator==(const VimReference&) const = default;
};

// How far an enumeration has come; one that has not begun is all 0.
using VimPosition = VimReference;

// The local date, or that of Greenwich; no part of it is known when `year` is 0.
struct VimDate {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  bool isGmt = false;
};

struct VimLogin {
  std::string path;  // of the post office
  std::string name;
  std::string password;
};

// What an enumeration of messages tells.
struct VimEnvelope {
  VimReference reference;
  VimDate date;
  std::string fromName;
  std::string subject;
};

// What the header of one message tells.
struct VimHeader {
  VimDate date;
  std::string fromName;
  std::string subject;
  std::uint32_t priority = 1;  // 0 low, 1 normal, 2 high
  bool returnReceipt = false;
};

struct VimItem {
  VimReference reference;
  vim::Selector itemClass = 0;
  std::string type;
  std::string name;
  std::uint32_t size = 0;  // bytes, as the library says
};

struct VimRecipient {
  std::string name;
  std::string address;  // may be empty: then the library looks the name up
};

struct VimEntry {
  std::string name;
  std::string address;
  bool isGroup = false;  // told by the enumeration alone
};

class Vim {
 public:
  using Status = vim::Status;
  using Handle = vim::Handle;
  using Selector = vim::Selector;

  virtual ~Vim() = default;

  // The library is looked for along the path, or in `directory` when that is not empty, which is
  // the current one meanwhile. It stays loaded.
  virtual Status Initialize(const std::string& directory) = 0;
  virtual Status Terminate() = 0;

  virtual Status GetDefaultSessionInfo(std::string& path, std::string& name) = 0;
  // Of a capability that is a number.
  virtual Status QueryCapability(Selector capability, std::uint32_t& value) = 0;
  // Version 1.00. Without a login: the session of the mail program that the user has logged in to.
  virtual Status OpenSession(const std::optional<VimLogin>& login, Handle& session) = 0;
  virtual Status CloseSession(Handle session) = 0;

  // An empty name: the inbox.
  virtual Status OpenMessageContainer(Handle session, const std::string& name,
                                      Handle& container) = 0;
  virtual Status CloseMessageContainer(Handle container) = 0;
  // The next messages, as many as the library gives in one call; `more` when they are not all.
  virtual Status EnumerateMessages(Handle container, VimPosition& position, Selector filter,
                                   bool unreadOnly, std::vector<VimEnvelope>& messages,
                                   bool& more) = 0;
  virtual Status RemoveMessage(Handle container, VimReference message) = 0;
  virtual Status MarkMessageAsRead(Handle container, VimReference message) = 0;
  virtual Status QueryUnreadMailCount(Handle container, std::uint32_t& count) = 0;
  virtual Status SetMessageCategory(Handle container, VimReference message,
                                    const std::string& category) = 0;
  virtual Status RemoveMessageCategory(Handle container, VimReference message,
                                       const std::string& category) = 0;

  virtual Status OpenMessage(Handle container, VimReference reference, Handle& message) = 0;
  virtual Status CloseMessage(Handle message) = 0;
  virtual Status GetMessageHeader(Handle message, VimHeader& header) = 0;
  virtual Status EnumerateMessageItems(Handle message, VimPosition& position, Selector itemClass,
                                       std::vector<VimItem>& items, bool& more) = 0;
  // A note part as text, and an attachment into a file: two uses of VIMGetMessageItem.
  virtual Status GetMessageItemText(Handle message, const VimItem& item, std::string& text) = 0;
  virtual Status GetMessageItemFile(Handle message, const VimItem& item,
                                    const std::string& file) = 0;
  virtual Status EnumerateMessageRecipients(Handle message, Selector recipientClass,
                                            VimPosition& position,
                                            std::vector<VimRecipient>& recipients, bool& more) = 0;

  virtual Status CreateMessage(Handle session, const std::string& type, Handle& message) = 0;
  virtual Status SetMessageRecipient(Handle message, Selector recipientClass,
                                     const VimRecipient& recipient) = 0;
  // A text, a yes or no, and a number: three uses of VIMSetMessageHeader.
  virtual Status SetMessageHeaderText(Handle message, Selector attribute,
                                      const std::string& text) = 0;
  virtual Status SetMessageHeaderFlag(Handle message, Selector attribute, bool value) = 0;
  virtual Status SetMessageHeaderNumber(Handle message, Selector attribute,
                                        std::uint32_t value) = 0;
  // The two uses of VIMSetMessageItem: a note part of the type "VIM_TEXT", a file under its name.
  virtual Status SetMessageItemText(Handle message, const std::string& text) = 0;
  virtual Status SetMessageItemFile(Handle message, const std::string& name,
                                    const std::string& file) = 0;
  // Closes the message, whatever it returns.
  virtual Status SendMessage(Handle message) = 0;

  virtual Status EnumerateAddressBooks(Handle session, VimPosition& position,
                                       std::vector<std::string>& names, bool& more) = 0;
  virtual Status OpenAddressBook(Handle session, const std::string& name, Handle& book) = 0;
  virtual Status CloseAddressBook(Handle book) = 0;
  // The next entries, as many as the library gives in one call; `more` when they are not all.
  virtual Status EnumerateAddressBookEntries(Handle book, VimPosition& position,
                                             std::vector<VimEntry>& entries, bool& more) = 0;
  // The first entry with that name: kFull, or one that begins so: kPartial.
  virtual Status MatchAddressBook(Handle book, const std::string& name, Selector match,
                                  VimReference& entry) = 0;
  virtual Status GetABEntryAttributes(Handle book, VimReference reference, VimEntry& entry) = 0;
};

}  // namespace quillon
