// Which messages of POP3 mailboxes have been fetched: for each mailbox a file with the servers'
// identifiers of those (UIDL), one in a line, oldest first.
//
// The files are in the directory Quillon/Fetched of the user's application data, by names that do
// not tell whose mailbox it is. One that cannot be read, or holds anything else, counts as empty:
// mail shows as new again, and never the other way round.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/Crypto.h"
#include "ports/FileSystem.h"

namespace quillon {

// RFC 1939, 7.
bool IsUniqueId(std::string_view text);

class FetchedIndex {
 public:
  // Of one mailbox; the oldest are forgotten.
  static constexpr std::size_t kMost = 100'000;

  // `userDirectory` is that of the user's application data; empty: there is none.
  FetchedIndex(FileSystem& files, const Crypto& crypto, std::string userDirectory);

  std::vector<std::string> Read(const std::string& mailbox) const;

  // False: there is no place for files.
  bool MakeDirectory();
  // Whoever changes a file holds it, in one process at a time. Null while another one does.
  std::unique_ptr<File> Lock();

  // Put into what the file holds now, and taken out of it. False: all is as before.
  bool Add(const std::string& mailbox, const std::vector<std::string>& identifiers);
  bool Remove(const std::string& mailbox, const std::vector<std::string>& identifiers);

 private:
  std::string PathOf(const std::string& mailbox) const;
  // No value when there is a file that cannot be read.
  std::optional<std::vector<std::string>> Load(const std::string& path) const;
  bool Store(const std::string& path, const std::vector<std::string>& identifiers);

  FileSystem& files_;
  const Crypto& crypto_;
  std::string parent_;
  std::string directory_;  // with a separator at its end; empty: there is none
};

}  // namespace quillon
