// A copy of a file that a client attaches: it may remove its own at once.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace desk {

// In the store's "making", and gone with the last that holds it.
class TakenFile {
 public:
  // Null when the file cannot be read.
  static std::shared_ptr<TakenFile> Of(const std::string& path);

  explicit TakenFile(std::filesystem::path path) : path_(std::move(path)) {}
  TakenFile(const TakenFile&) = delete;
  TakenFile& operator=(const TakenFile&) = delete;
  ~TakenFile();

  const std::filesystem::path& Path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace desk
