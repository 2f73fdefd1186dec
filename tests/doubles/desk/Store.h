// The desk: a small mail store in plain files, with a post office, for the stand-ins of mail
// systems that do not exist here. Each of those is a thin face over this store, so what is sent
// through one is read through another, and `./dev desk` shows it.
//
//   STORE/addressbook.txt                 entries that are no accounts
//         mailboxes/ann/account.txt       an account: the directory's name is its profile's
//         mailboxes/ann/folders/...       its root folder; folder.txt, messages/, folders/ in each
//         mailboxes/Public Folders/       no account's
//         mailboxes/Outside/              its root folder has the mail for nobody here
//         making/                         messages that are not complete yet
//         faults.txt, calls.txt           what shall go wrong, and which calls there were
//         dialog.txt                      what the user of a dialog does
//
// All texts are UTF-8. Several programs may use one store; in a program, one thread at a time uses
// a Store. What the system refuses is thrown as std::filesystem::filesystem_error, what makes no
// sense as StoreError.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "desk/PlainFile.h"

namespace desk {

inline constexpr char kInbox[] = "Inbox";
inline constexpr char kOutbox[] = "Outbox";
inline constexpr char kSentItems[] = "Sent Items";
inline constexpr char kDeletedItems[] = "Deleted Items";
// Mailboxes that are no account's.
inline constexpr char kPublicFolders[] = "Public Folders";
inline constexpr char kOutside[] = "Outside";

class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Account {
  std::string profile;  // the name of its mailbox too
  std::string password;
  std::string name;
  std::string address;  // "SMTP:ann@desk.example"
  bool isDefault = false;
};

// Of the address book. Its address is its identifier.
struct Entry {
  std::string name;
  std::string address;
  bool isGroup = false;  // its line in the file goes on with " group"
};

struct Folder {
  std::string mailbox;
  std::string id;        // the same wherever the folder moves
  std::string parentId;  // empty for a root folder
  std::string name;
  std::filesystem::path path;
};

struct Recipient {
  int recipientClass = 1;  // 1 To, 2 Cc, 3 Bcc
  std::string name;
  std::string address;
};

struct Attachment {
  std::string name;
  std::filesystem::path path;  // where its bytes are: given to Add, and found by Read in the store
  int position = -1;
  int type = 1;        // 1: a file, 2: a link to one
  std::string source;  // of a link
};

// Whatever else a face keeps with a message, by name or by tag ("0x0C08000B").
struct Field {
  std::string name;
  std::string value;
  int type = 8;  // of the value, as automation numbers types
};

struct Message {
  std::string id;        // given by the store, the same wherever the message moves
  std::string folderId;  // set by Read
  std::string subject;
  std::string text;
  std::string messageClass = "IPM.Note";
  std::string senderName;
  std::string senderAddress;
  std::string date;  // sent and received: "YYYY/MM/DD HH:MM", local
  std::string conversationIndex;
  std::string conversationTopic;
  std::string richText;
  int importance = 1;
  int sensitivity = 0;
  bool unread = false;
  bool receipt = false;   // a read receipt is asked for
  bool delivery = false;  // a delivery report is asked for
  bool sent = false;
  std::vector<Recipient> recipients;
  std::vector<Attachment> attachments;
  std::vector<Field> fields;
};

class Store {
 public:
  // A store that is not there is made, with the accounts ann and bob.
  explicit Store(std::filesystem::path place = Place());

  // Where the faces have their store: QUILLON_DESK of the environment, else C:\QuillonDesk.
  static std::filesystem::path Place();

  // The post office. An empty profile is the default account's.
  std::vector<Account> Accounts() const;
  std::optional<Account> FindAccount(std::string_view profile) const;
  std::vector<Entry> AddressBook() const;  // the accounts' entries first
  // The entries that a name or an address may mean: one that is exactly so, else all that begin so,
  // else an address that nobody here has ("x@y" or "TYPE:x") as it stands.
  std::vector<Entry> Resolve(std::string_view text) const;

  // Folders.
  Folder Root(std::string_view mailbox) const;
  std::vector<Folder> Subfolders(const Folder& folder) const;                          // by name
  std::optional<Folder> Subfolder(const Folder& folder, std::string_view name) const;  // any case
  // One that every account has (kInbox and so on); made again when somebody has removed it.
  Folder KnownFolder(std::string_view mailbox, std::string_view name);
  std::optional<Folder> FindFolder(std::string_view mailbox, std::string_view id) const;
  Folder AddFolder(const Folder& parent, std::string_view name);
  Folder RenameFolder(const Folder& folder, std::string_view name);
  // With everything in it; a copy gets identifiers of its own. An empty name: the same.
  Folder MoveFolder(const Folder& folder, const Folder& parent, std::string_view name = {});
  Folder CopyFolder(const Folder& folder, const Folder& parent, std::string_view name = {});
  void RemoveFolder(const Folder& folder);

  // Messages; no value and false when there is no such message (any more).
  std::vector<std::string> MessageIds(const Folder& folder) const;  // oldest first
  bool Has(const Folder& folder, std::string_view id) const;
  std::optional<Message> Read(std::string_view mailbox, std::string_view id) const;
  // Returns the identifier. The files of attachments are copied; all of the message is seen at
  // once.
  std::string Add(const Folder& folder, const Message& message);
  bool Change(std::string_view mailbox, const Message& message);
  bool Remove(std::string_view mailbox, std::string_view id);
  bool Move(std::string_view mailbox, std::string_view id, const Folder& folder);
  std::optional<std::string> Copy(std::string_view mailbox, std::string_view id,
                                  const Folder& folder);

  // Sends from an account: the message, with the sender's name and the date, gets into the Inbox of
  // every account that is a recipient, and into Outside when a recipient is none. A message that is
  // in the store already (`id`) leaves its folder. Returns the identifier in Sent Items, if kept.
  std::string Send(const Account& account, Message message, bool keep = true);

  // Every call of every face begins with this: the call is written into the log with its main
  // arguments (never a password), and the word of the fault file for it is returned, if there is
  // one: "MAPISendMail 3", or for the second call of that name "MAPISendMail#2 3".
  std::optional<std::string> Call(std::string_view name, std::string_view arguments);
  // A word of the fault file that stands for no call, as "Version 1.0".
  std::optional<std::string> Word(std::string_view name) const;
  // What the user does in a dialog; no value: there is no display.
  std::optional<std::string> Dialog() const;

  const std::filesystem::path& Where() const { return place_; }

 private:
  struct Found {
    Folder folder;
    std::filesystem::path path;
  };

  void MakeIfMissing();
  void MakeMailbox(std::string_view mailbox);
  std::filesystem::path Mailbox(std::string_view mailbox) const;
  Folder MakeFolder(const std::filesystem::path& path, const Folder& parent, std::string_view name);
  std::filesystem::path FreePlace(const Folder& parent, std::string_view name) const;
  std::string CheckedName(const Folder& parent, std::string_view name) const;
  void CopyContents(const Folder& from, const Folder& to);
  static bool IsStillThere(const Folder& folder);
  std::optional<Found> Find(std::string_view mailbox, std::string_view id) const;
  std::string NewId();
  void Deliver(const Message& message, std::string_view mailbox);

  std::filesystem::path place_;
  std::uint64_t lastId_ = 0;
  std::uint32_t process_;
  mutable std::optional<Folder> lastFolder_;  // where a message was found, looked into first
  std::map<std::string, int, std::less<>> calls_;
};

// "YYYY/MM/DD HH:MM", local.
std::string DateNow();

}  // namespace desk
