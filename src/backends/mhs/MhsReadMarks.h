// Which messages of a delivery directory have been read: the file QUILLON.IDX beside them, with a
// line for each. MHS takes it for no message, since no message begins as it does.
//
// Lines are only ever added at its end, each by one write that begins and ends with a line end, so
// that programs do not disturb each other and a damaged line costs no other.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "ports/FileSystem.h"

namespace quillon {

class MhsReadMarks {
 public:
  // `directory` has a separator at its end.
  MhsReadMarks(FileSystem& files, const std::string& directory);

  // `identity` tells the message from another one of the same name, before or after it.
  bool Contains(std::string_view name, std::uint64_t identity) const;

  // False when it cannot be written down.
  bool Add(std::string_view name, std::uint64_t identity);

  // Drops the lines of messages that are gone when they are many more than those that are `present`
  // (their names).
  void Tidy(const std::set<std::string>& present);

 private:
  bool Append(std::string_view lines);
  void Read(const std::string& path, std::set<std::string>& lines) const;

  FileSystem& files_;
  const std::string path_;
  const std::string aside_;  // where the file is while it is tidied
  std::set<std::string> lines_;
};

}  // namespace quillon
