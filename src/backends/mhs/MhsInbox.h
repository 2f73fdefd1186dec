// The messages in a user's delivery directory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "backends/mhs/MhsAccount.h"
#include "backends/mhs/SmfMessage.h"
#include "ports/FileSystem.h"

namespace quillon {

// What stands at the beginning of a message file.
struct MhsHead {
  SmfMessage message;  // its body may be cut short
  std::uint64_t size = 0;
  std::uint64_t identity = 0;  // tells it from another message in a file of the same name
  std::optional<LocalTime> arrived;
};

// Operations throw MhsFailure.
class MhsInbox {
 public:
  MhsInbox(FileSystem& files, const MhsAccount& account);

  // Where the messages are, with a separator at the end.
  const std::string& Directory() const noexcept { return directory_; }

  // The names of the files that may be messages; none when nothing was ever delivered.
  std::vector<std::string> Names() const;

  // No value when there is no message in that file, or none any more.
  std::optional<MhsHead> Head(const std::string& name) const;

  // The whole message with this identity.
  SmfMessage Read(const std::string& name, std::uint64_t identity) const;

  // Removes it and then its parcels.
  void Delete(const std::string& name, std::uint64_t identity) const;

  // Where a parcel is; a parcel that is not one of the parcel directory fails as one that is gone.
  std::string ParcelPath(const std::string& parcel) const;

 private:
  FileSystem& files_;
  std::string directory_;
  std::string parcels_;
};

}  // namespace quillon
