// Mail in plain files, as the sample provider keeps it:
//
//   DIRECTORY/book.txt                        optional: an address book, see Entries
//   DIRECTORY/<user>/password.txt             optional: what Login has to be given
//   DIRECTORY/<user>/<folder>/<message>/      "inbox", "sent", or any other folder
//       message.txt                           header lines, an empty line, the text
//       1, 2, ...                             the attachments
//       unread                                is there until the message has been read
//
// A message is made in a directory whose name begins with "." and then renamed, so that nobody sees
// half of one. Any function here may throw std::filesystem::filesystem_error, or a Failure.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace sample {

namespace fs = std::filesystem;

// What the provider returns, besides the numbers that the interface itself has.
enum Number {
  kNoUser = 3001,
  kWrongPassword = 3002,
  kNoSession = 3003,
  kNoMessage = 3004,
  kNoFolder = 3005,
  kBadName = 3006,
  kFilesFailed = 3007,
  kNoBook = 3008,
};

// Ends an operation with a number. `about` is for the text that is shown to the user.
struct Failure {
  int number;
  std::string about;
};

// Text is UTF-8 throughout; a path of the system may be something else.
fs::path PathFrom(const std::string& utf8);
std::string Utf8From(const fs::path& path);

// Puts the content of a file into another that is there already.
void CopyInto(const fs::path& from, const fs::path& to);

struct Party {
  int kind = 0;  // as QuillonParty has it
  std::string name;
  std::string address;
};

struct Entry {
  std::string name;
  std::string address;
  bool isGroup = false;
};

struct Attachment {
  std::string name;
  fs::path file;
};

struct Message {
  std::string subject;
  Party from;
  std::vector<Party> recipients;
  std::string date;  // "2026-11-22 08:05:00"
  bool receipt = false;
  int importance = 3;
  std::vector<Attachment> attachments;
  std::string text;
};

class MailDirectory {
 public:
  explicit MailDirectory(fs::path root) : root_(std::move(root)) {}

  // The name of the user as his directory has it. Throws kNoUser or kWrongPassword.
  std::string Login(const std::string& name, const std::string& password) const;

  // Puts the message into the inbox of each recipient, and into "sent" of the sender. Throws
  // kNoUser before anything is written when there is no such recipient.
  void Send(const std::string& user, const Message& message) const;

  // Identifiers, as "inbox/20261122080500-1": their order is that in which the messages came.
  std::vector<std::string> List(const std::string& user, const std::string& folder) const;

  Message Read(const std::string& user, const std::string& id) const;
  bool IsUnread(const std::string& user, const std::string& id) const;
  void MarkRead(const std::string& user, const std::string& id) const;
  void Delete(const std::string& user, const std::string& id) const;
  // "Book" for book.txt, where it is there, and "Users" for all who have a directory.
  std::vector<std::string> Books() const;
  // Up to `most` entries behind the first `from`. A line of book.txt is a name, a tab and an
  // address; a name that begins with "*" is a group's. Throws kNoBook.
  std::vector<Entry> Entries(const std::string& book, std::size_t from, std::size_t most) const;

  // The folder has to be there.
  void Move(const std::string& user, const std::string& id, const std::string& folder) const;

 private:
  std::vector<Entry> BookEntries(std::size_t from, std::size_t most) const;
  std::vector<Entry> UserEntries() const;
  fs::path FolderOf(const std::string& user, const std::string& folder) const;
  fs::path MessageAt(const std::string& user, const std::string& id) const;

  fs::path root_;
};

}  // namespace sample
