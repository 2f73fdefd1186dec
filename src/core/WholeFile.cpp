#include "core/WholeFile.h"

namespace quillon {
namespace {

// Most files read whole are small: settings, a message text.
constexpr size_t kFirstBlock = 4 * 1024;

}  // namespace

std::optional<std::vector<uint8_t>> ReadWholeFile(FileSystem& files, const std::string& path) {
  const std::unique_ptr<File> file = files.Open(path, OpenMode::kRead);
  if (!file) return std::nullopt;
  std::vector<uint8_t> bytes(kFirstBlock);
  size_t used = 0;
  for (;;) {
    // The size is not asked for: it may change while the file is read, and a device has none.
    if (used == bytes.size()) bytes.resize(used * 2);
    const std::optional<size_t> count = file->Read(std::span(bytes).subspan(used));
    if (!count) return std::nullopt;
    if (*count == 0) break;
    used += *count;
  }
  bytes.resize(used);
  return bytes;
}

bool WriteWholeFile(FileSystem& files, const std::string& path, std::span<const uint8_t> bytes) {
  const std::unique_ptr<File> file = files.Open(path, OpenMode::kCreate);
  if (!file) return false;
  const bool written = file->Write(bytes);
  if (file->Close() && written) return true;
  files.RemoveFile(path);
  return false;
}

std::string WithSeparator(const FileSystem& files, std::string directory) {
  if (directory.empty()) return directory;
  const char last = directory.back();
  if (last != files.Separator() && last != '/') directory += files.Separator();
  return directory;
}

std::string_view FileNameOf(std::string_view path) {
  const size_t cut = path.find_last_of("/\\:");
  return cut == std::string_view::npos ? path : path.substr(cut + 1);
}

}  // namespace quillon
