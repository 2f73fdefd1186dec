#include "codec/FileName.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <random>

#include "core/Text.h"
#include "core/Utf8.h"
#include "core/WholeFile.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

constexpr std::string_view kAllowed =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz1234567890_^$~!#%&-{}()@'` ";
constexpr std::size_t kPartLimit = 255;
constexpr std::size_t kBaseLimit = 1000;
constexpr int kLastDigit = 9;
constexpr int kManyTries = 10000;  // in a directory that has nearly all names of three letters
constexpr int kMaximumTries = 2 * kManyTries;

constexpr std::array<std::string_view, 6> kDevices{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};

struct NameParts {
  std::string base;
  std::string extension;
};

// The limit counts characters as a client of UTF-16 sees them.
std::string Filtered(std::string_view text) {
  constexpr char32_t kFirstOfTwoUnits = 0x10000;
  std::string kept;
  std::size_t units = 0;
  while (!text.empty()) {
    const char first = text[0];
    units += TakeUtf8(text) < kFirstOfTwoUnits ? 1U : 2U;
    if (units > kPartLimit) break;
    if (kAllowed.find(first) != std::string_view::npos) kept += first;
  }
  return kept;
}

bool IsDevice(std::string_view base) {
  const auto upper = UpperAscii(Trim(base));
  if (std::find(kDevices.begin(), kDevices.end(), upper) != kDevices.end()) return true;
  return upper.size() == 4 && (upper.starts_with("COM") || upper.starts_with("LPT")) &&
         upper[3] >= '0' && upper[3] <= '9';
}

NameParts CleanParts(std::string_view name) {
  const auto dot = name.find('.');
  NameParts parts;
  parts.base = Filtered(name.substr(0, dot));
  if (dot != std::string_view::npos) parts.extension = Filtered(name.substr(dot + 1));
  // Windows drops blanks at the end of a name.
  parts.extension.resize(parts.extension.find_last_not_of(' ') + 1);
  if (parts.base.empty()) parts.base = "TEMPFILE";
  if (parts.extension.empty()) parts.extension = "TMP";
  if (IsDevice(parts.base)) parts.base += '_';
  return parts;
}

std::string Joined(const NameParts& parts) {
  return parts.base + "." + parts.extension;
}

// Writes the suffix over the end of a base name, which keeps its length; one no longer than the
// suffix grows.
std::string WithSuffix(const std::string& base, const std::string& suffix) {
  if (base.size() > kBaseLimit) return base.substr(0, kBaseLimit) + suffix;
  if (base.size() <= suffix.size()) return base + suffix;
  return base.substr(0, base.size() - suffix.size()) + suffix;
}

// What every system has room for, with a directory in front of it.
std::string ShortName(std::string_view name) {
  constexpr std::size_t kShortBase = 50;
  constexpr std::size_t kShortExtension = 10;
  auto parts = CleanParts(name);
  parts.base.resize(std::min(parts.base.size(), kShortBase));
  parts.extension.resize(std::min(parts.extension.size(), kShortExtension));
  return Joined(parts);
}

// Offers one candidate name after the other until one is taken by `take`; empty when none was.
template <typename Take>
std::string FirstFree(FileSystem& files, const std::string& directory, std::string_view name,
                      const std::function<std::string()>& randomLetters, Take take) {
  const auto prefix = WithSeparator(files, directory);
  const auto parts = CleanParts(name);
  auto candidate = parts;
  for (int counter = 0; counter < kMaximumTries; ++counter) {
    if (counter > 0) {
      auto suffix = counter <= kLastDigit ? std::to_string(counter) : randomLetters();
      if (counter > kManyTries) suffix += randomLetters();
      candidate.base = WithSuffix(parts.base, suffix);
      if (IsDevice(candidate.base)) continue;  // "COMX" with a digit over its end
    }
    auto path = prefix + Joined(candidate);
    if (take(path)) return path;
  }
  return {};
}

}  // namespace

std::string CleanFileName(std::string_view name) {
  return Joined(CleanParts(name));
}

std::string RandomLetters() {
  const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
  std::minstd_rand generator(static_cast<std::minstd_rand::result_type>(ticks) ^
                             std::random_device()());
  std::uniform_int_distribution<int> letter('A', 'Z');
  std::string letters;
  for (int i = 0; i < 3; ++i) letters += static_cast<char>(letter(generator));
  return letters;
}

AttachmentFile CreateAttachmentFile(FileSystem& files, const std::string& directory,
                                    std::string_view name, bool returnShort,
                                    const std::function<std::string()>& randomLetters) {
  AttachmentFile created;
  const auto create = [&](const std::string& candidate) {
    created.file = files.Open(candidate, OpenMode::kCreateNew);
    // A file that neither is there nor can be made: the directory takes none of this length.
    return created.file != nullptr ||
           (!files.FileExists(candidate) && !files.DirectoryExists(candidate));
  };
  created.path = FirstFree(files, directory, name, randomLetters, create);
  if (created.file == nullptr) {
    created.path = FirstFree(files, directory, ShortName(name), randomLetters, create);
  }
  if (created.file == nullptr) return {};
  created.listedPath = returnShort ? files.ShortPath(created.path) : created.path;
  return created;
}

std::string UniqueAttachmentPath(FileSystem& files, const std::string& directory,
                                 std::string_view name, bool returnShort) {
  auto path = FirstFree(files, directory, name, RandomLetters, [&](const std::string& candidate) {
    return !files.FileExists(candidate) && !files.DirectoryExists(candidate);
  });
  return returnShort ? files.ShortPath(path) : path;
}

}  // namespace quillon
