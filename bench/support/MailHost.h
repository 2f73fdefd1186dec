// The embedded mail host as a process beside the benchmark: the peer of both sides of a comparison.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace quillon::bench {

// A directory that is gone, with all that is in it, when this is.
class ScratchDirectory {
 public:
  ScratchDirectory() : ScratchDirectory(std::filesystem::temp_directory_path()) {}
  explicit ScratchDirectory(const std::filesystem::path& parent);
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::filesystem::path& Path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
};

class MailHost {
 public:
  // Starts `mailhost`, which lies beside this program, on free ports and waits until it serves.
  explicit MailHost(const std::vector<std::string>& options);
  // Ends it, and returns when it has ended.
  ~MailHost();
  MailHost(const MailHost&) = delete;
  MailHost& operator=(const MailHost&) = delete;

  std::uint16_t SmtpPort() const noexcept { return smtpPort_; }
  std::uint16_t PopPort() const noexcept { return popPort_; }
  // Those for TLS, when the options ask for them; else 0.
  std::uint16_t SmtpsPort() const noexcept { return smtpsPort_; }
  std::uint16_t PopsPort() const noexcept { return popsPort_; }

 private:
  pid_t process_ = 0;
  std::uint16_t smtpPort_ = 0;
  std::uint16_t popPort_ = 0;
  std::uint16_t smtpsPort_ = 0;
  std::uint16_t popsPort_ = 0;
};

// Where this program lies.
std::filesystem::path ProgramDirectory();

// Fills a Maildir with messages that have the header fields of ordinary mail.
void FillMaildir(const std::filesystem::path& store, std::size_t count);

}  // namespace quillon::bench
