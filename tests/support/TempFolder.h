// A folder of its own for one test, removed with everything in it.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/WholeFile.h"
#include "ports/FileSystem.h"

namespace quillon::testing {

class TempFolder {
 public:
  TempFolder() {
    static std::atomic<unsigned> next{0};
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    path_ = std::filesystem::temp_directory_path() /
            ("quillon-" + std::to_string(now) + "-" + std::to_string(next++));
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // The folder itself, without a separator at its end.
  std::string Path() const { return path_.string(); }
  std::string Path(std::string_view name) const {
    const auto* const utf8 = reinterpret_cast<const char8_t*>(name.data());
    const std::u8string full =
        (path_ / std::filesystem::path(std::u8string_view(utf8, name.size()))).u8string();
    return {full.begin(), full.end()};
  }

  // The names of the files in the folder, sorted.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      const std::u8string name = entry.path().filename().u8string();
      names.emplace_back(name.begin(), name.end());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path path_;
};

inline std::span<const uint8_t> BytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

inline std::string TextOf(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The whole file as text; the empty text when there is none.
inline std::string ContentOf(FileSystem& files, const std::string& path) {
  const auto bytes = ReadWholeFile(files, path);
  return bytes ? TextOf(*bytes) : std::string();
}

}  // namespace quillon::testing
