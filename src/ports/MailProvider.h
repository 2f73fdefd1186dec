// A mail system behind a provider library, in plain records. sdk/quillon_provider.h, the library's
// side of it, says what each operation is to do. All texts are UTF-8, but for the identifiers of
// messages, which are bytes.
//
// Every call returns the library's number, or one of those below. Whatever the library hands out
// has been copied when a call returns; what a caller's function throws comes out of the call.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ports/LocalClock.h"

namespace quillon {

namespace provider {

inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kCancelled = 522;
inline constexpr std::int32_t kNotSupported = 530;  // also when the library lacks the function

// What is wrong with the library itself; no library may return these.
inline constexpr std::int32_t kMissing = 3990;         // there is none, or it cannot be loaded
inline constexpr std::int32_t kOtherVersion = 3991;    // it is no provider, or of another version
inline constexpr std::int32_t kBroken = 3992;          // a fault has ended the call
inline constexpr std::int32_t kBadData = 3993;         // what it passed cannot be
inline constexpr std::int32_t kFileNotWritten = 3994;  // there is no place for an attachment

inline constexpr std::int32_t kTo = 1;  // kinds of recipients
inline constexpr std::int32_t kCc = 2;
inline constexpr std::int32_t kBcc = 3;

}  // namespace provider

struct ProviderCall {
  std::int32_t session = 0;
  std::int32_t window = 0;  // the owner of dialogs; 0: none
};

struct ProviderLogin {
  std::string name;
  std::string password;
  std::string postOffice;
  std::string profile;
  bool dialog = false;    // the user may be asked
  bool download = false;  // new mail is fetched first
};

struct ProviderParty {
  std::int32_t kind = 0;  // of a recipient
  std::string name;
  std::string address;
};

struct ProviderFile {
  std::string path;
  std::string name;
};

// The names from the outermost on; none for the inbox.
using ProviderFolder = std::vector<std::string>;

struct ProviderMessage {
  std::string subject;
  std::string text;
  std::string type;
  ProviderParty from;
  ProviderParty replyTo;
  std::vector<ProviderParty> recipients;
  std::vector<ProviderFile> files;  // that go out with it
  LocalTime date{.year = 0};        // year 0: not known
  std::string dateText;
  std::int32_t importance = 0;  // 1 (highest) to 5, 0: not known
  std::int32_t deliveryPriority = 0;
  std::int32_t sensitivity = 0;
  std::int32_t deliveryReport = 0;
  bool receipt = false;
  bool sign = false;
  bool encrypt = false;
  bool preventCopying = false;
};

struct ProviderHeader {
  std::string id;  // never empty
  std::string subject;
  ProviderParty from;
  std::string to;
  std::string cc;
  std::string type;
  LocalTime date{.year = 0};
  std::string dateText;
  std::int32_t importance = 0;
  std::uint32_t bytes = 0;  // 0: not known
  std::uint32_t fileCount = 0;
  bool unread = false;
  bool receipt = false;
};

struct ProviderListing {
  ProviderFolder folder;
  std::uint32_t most = 0;  // so many are enough
  bool unreadOnly = false;
  bool byDate = false;  // oldest first
};

struct ProviderReading {
  std::string id;
  bool peek = false;
  bool withoutFiles = false;
};

struct ProviderEntry {
  std::string name;
  std::string address;
  bool isGroup = false;
};

// The part of an address book that begins behind the first `from` entries.
struct ProviderEntries {
  std::string book;
  std::uint32_t from = 0;
  std::uint32_t most = 0;  // no more come
};

class MailProvider {
 public:
  // Takes a header; false when that is enough.
  using Found = std::function<bool(ProviderHeader)>;
  // Makes an empty file for an attachment of this name and returns its path; an empty one, which
  // ends the reading with kFileNotWritten, when it cannot.
  using NewFile = std::function<std::string(const std::string& name)>;

  virtual ~MailProvider() = default;

  // Loads the library, a full path or the name of a file that is found where libraries are looked
  // for, unless one has been loaded already: the first one that fits stays. kSuccess, kMissing,
  // kOtherVersion or kBroken.
  virtual std::int32_t Load(const std::string& library) = 0;

  // The others return kMissing before a library is loaded.
  virtual std::int32_t Login(const ProviderCall& call, const ProviderLogin& login,
                             std::int32_t& session) = 0;
  virtual std::int32_t Logout(const ProviderCall& call) = 0;
  virtual std::int32_t Send(const ProviderCall& call, const ProviderMessage& message) = 0;
  virtual std::int32_t List(const ProviderCall& call, const ProviderListing& listing,
                            const Found& found) = 0;
  virtual std::int32_t Read(const ProviderCall& call, const ProviderReading& reading,
                            ProviderMessage& message, const NewFile& newFile) = 0;
  virtual std::int32_t Delete(const ProviderCall& call, const std::string& id) = 0;
  virtual std::int32_t Move(const ProviderCall& call, const std::string& id,
                            const ProviderFolder& folder) = 0;
  virtual std::int32_t UnreadCount(const ProviderCall& call, const ProviderFolder& folder,
                                   std::uint32_t& count) = 0;
  virtual std::int32_t GetSession(const ProviderCall& call, std::int32_t& session) = 0;
  virtual std::int32_t SetSession(const ProviderCall& call) = 0;

  // Whether the library has them, and a window to choose from.
  virtual bool HasAddressBooks() = 0;
  virtual bool HasAddressWindow() = 0;
  virtual std::int32_t Books(const ProviderCall& call, std::vector<std::string>& names) = 0;
  // None, with success, behind the last one.
  virtual std::int32_t Entries(const ProviderCall& call, const ProviderEntries& part,
                               std::vector<ProviderEntry>& entries) = 0;
  // `parties`: who is chosen before, and after a success.
  virtual std::int32_t ChooseAddresses(const ProviderCall& call,
                                       std::vector<ProviderParty>& parties) = 0;

  // Empty when the library has no text for the number.
  virtual std::string ErrorText(std::int32_t number) = 0;
};

}  // namespace quillon
