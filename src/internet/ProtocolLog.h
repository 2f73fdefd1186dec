// The raw protocol log "POPDUMP.TXT": every command and reply line of both protocols, and
// milestones with their time.
//
// Logging never fails an operation: errors of the file are ignored. A password is written as
// "****".
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ports/FileSystem.h"
#include "ports/LocalClock.h"

namespace quillon {

// "2026-11-21 22:03:59": the time in front of a milestone.
std::string LogTime(const LocalTime& time);

class ProtocolLog {
 public:
  // `directory` is where the file lives, with or without a separator at its end; `heading`, if
  // there is one, the first line of each file.
  ProtocolLog(FileSystem& files, std::string directory, std::string heading = {});
  ~ProtocolLog();
  ProtocolLog(const ProtocolLog&) = delete;
  ProtocolLog& operator=(const ProtocolLog&) = delete;

  // Begins a new file; an existing one is deleted first.
  void Start();
  void Stop();
  // How often it has been started.
  unsigned Starts() const noexcept { return starts_; }
  bool IsOpen() const noexcept { return file_ != nullptr; }

  // Appends prefix, text and CR LF; does nothing while the file is not open.
  void WriteDebug(std::string_view prefix, std::string_view text = {});

 private:
  FileSystem& files_;
  std::string directory_;
  std::string heading_;
  std::unique_ptr<File> file_;
  std::string line_;
  unsigned starts_ = 0;
};

}  // namespace quillon
