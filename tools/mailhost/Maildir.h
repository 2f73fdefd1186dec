// The store: a Maildir directory, with the envelopes of the messages received here in
// DIR/envelopes.
//
// A message is written to tmp, then renamed into new, so that a reader never sees half of one. The
// directory is read anew for every login, so other programs may add and remove messages.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Delivery.h"
#include "UniqueFd.h"

namespace mailhost {

struct StoredMessage {
  std::string path;        // below the store, such as "new/1700000000.M1P2Q3.localhost"
  std::string name;        // the file name
  std::string id;          // stays the same when the message moves from new to cur (RFC 1939 UIDL)
  std::uint64_t size = 0;  // as POP3 sends it
};

class Maildir {
 public:
  // Makes the directories that are missing. Throws std::filesystem::filesystem_error.
  explicit Maildir(std::string directory);

  // The messages of new and cur, in the order of their file names.
  std::vector<StoredMessage> List();

  // Empty when the message is gone.
  UniqueFd Open(const StoredMessage& message) const;
  // False when the message could not be removed. One that is gone already counts as removed.
  bool Remove(const StoredMessage& message) const;

  // Null when no file can be made.
  std::unique_ptr<Delivery> Begin();

 private:
  // Size of a file as POP3 sends it, which costs reading it, and the state of the file it holds
  // for.
  struct KnownSize {
    std::uint64_t fileSize;
    std::int64_t changed;
    std::uint64_t wireSize;
  };

  void ListFolder(const std::string& folder, std::vector<StoredMessage>& messages,
                  std::unordered_map<std::string, KnownSize>& sizes) const;
  std::string NextName();

  std::string directory_;
  std::unordered_map<std::string, KnownSize> sizes_;
  std::int64_t lastTime_ = 0;
  std::uint64_t sequence_ = 0;
};

}  // namespace mailhost
