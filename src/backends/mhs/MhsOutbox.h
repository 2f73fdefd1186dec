// The files of one Send: parcels first, then messages that take their names among those to be sent
// only when all are whole. Unless they do, everything is taken back.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/FileSystem.h"

namespace quillon {

struct MhsParcel {
  std::string name;
  std::optional<LocalTime> written;  // when the file was
};

// Operations throw MhsFailure. No file is ever written over.
class MhsOutbox {
 public:
  // `directory` is the mail directory.
  MhsOutbox(FileSystem& files, const std::string& directory);
  ~MhsOutbox();
  MhsOutbox(const MhsOutbox&) = delete;
  MhsOutbox& operator=(const MhsOutbox&) = delete;

  // Copies a file.
  MhsParcel AddParcel(const std::string& file);

  void AddMessage(std::string_view bytes);

  // Hands the messages over.
  void Commit();

 private:
  std::unique_ptr<File> Create(const std::string& extension, std::string& name);
  void Place(const std::string& message);

  FileSystem& files_;
  const std::string outgoing_;
  const std::string parcels_;
  std::vector<std::string> messages_;  // that wait, in the parcel directory, where nobody looks
  std::vector<std::string> made_;      // what is there, to be taken back
};

}  // namespace quillon
