#include "backends/mhs/MhsReadMarks.h"

#include <cstddef>
#include <utility>

#include "backends/mhs/MhsNames.h"
#include "core/WholeFile.h"

namespace quillon {

namespace {

constexpr std::size_t kMostLeftOver = 1000;
constexpr std::string_view kLineEnds = "\r\n";

std::string LineOf(std::string_view name, std::uint64_t identity) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string line(name);
  line += ' ';
  for (int shift = 60; shift >= 0; shift -= 4) line += kDigits[(identity >> shift) & 0xF];
  return line;
}

}  // namespace

// Another program may be tidying: what it has set aside is read as well, and then, if that is gone
// by now, has come back to the file.
MhsReadMarks::MhsReadMarks(FileSystem& files, const std::string& directory)
    : files_(files), path_(directory + kOwnFiles + "IDX"), aside_(directory + kOwnFiles + "OLD") {
  for (const auto& path : {path_, aside_, path_}) Read(path, lines_);
}

bool MhsReadMarks::Contains(std::string_view name, std::uint64_t identity) const {
  return lines_.contains(LineOf(name, identity));
}

bool MhsReadMarks::Add(std::string_view name, std::uint64_t identity) {
  auto line = LineOf(name, identity);
  if (lines_.contains(line)) return true;
  if (!Append(line)) return false;
  lines_.insert(std::move(line));
  return true;
}

void MhsReadMarks::Tidy(const std::set<std::string>& present) {
  if (lines_.size() <= present.size() + kMostLeftOver) return;
  // New lines begin a new file meanwhile. What is there already was left behind by a program that
  // died.
  if (!files_.FileExists(aside_) && !files_.RenameToNew(path_, aside_)) return;
  std::set<std::string> lines;
  Read(aside_, lines);
  std::string kept;
  for (const auto& line : lines) {
    if (!present.contains(line.substr(0, line.rfind(' ')))) continue;
    if (!kept.empty()) kept += kLineEnds;
    kept += line;
  }
  if (kept.empty() || Append(kept)) files_.RemoveFile(aside_);
}

bool MhsReadMarks::Append(std::string_view lines) {
  const auto file = files_.Open(path_, OpenMode::kAppend);
  if (file == nullptr) return false;
  const auto text = std::string(kLineEnds).append(lines).append(kLineEnds);
  const bool written =
      file->Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  return file->Close() && written;
}

void MhsReadMarks::Read(const std::string& path, std::set<std::string>& lines) const {
  const auto bytes = ReadWholeFile(files_, path);
  if (!bytes) return;
  std::string_view rest(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  while (!rest.empty()) {
    const auto end = rest.find_first_of(kLineEnds);
    if (end != 0) lines.emplace(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
}

}  // namespace quillon
