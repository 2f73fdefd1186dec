#include "internet/FetchedIndex.h"

#include <algorithm>
#include <set>
#include <span>
#include <utility>

#include "core/HexDigit.h"
#include "core/WholeFile.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestId = 70;
constexpr std::size_t kLargestFile = FetchedIndex::kMost * (kLongestId + 1);

// None when anything else is in it: half an identifier may be that of another message.
std::vector<std::string> IdentifiersIn(std::string_view text) {
  std::vector<std::string> identifiers;
  while (!text.empty()) {
    const auto length = text.find('\n');
    const auto line = text.substr(0, length);
    if (length == std::string_view::npos || !IsUniqueId(line)) return {};
    identifiers.emplace_back(line);
    text.remove_prefix(length + 1);
  }
  if (identifiers.size() > FetchedIndex::kMost) return {};
  return identifiers;
}

}  // namespace

bool IsUniqueId(std::string_view text) {
  return !text.empty() && text.size() <= kLongestId &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '\x21' && c <= '\x7E'; });
}

FetchedIndex::FetchedIndex(FileSystem& files, const Crypto& crypto, std::string userDirectory)
    : files_(files), crypto_(crypto) {
  if (userDirectory.empty()) return;
  parent_ = WithSeparator(files, std::move(userDirectory)) + "Quillon";
  directory_ = WithSeparator(files, WithSeparator(files, parent_) + "Fetched");
}

std::string FetchedIndex::PathOf(const std::string& mailbox) const {
  return directory_ + HexText(crypto_.Digest(HashAlgorithm::kSha256, mailbox)) + ".txt";
}

std::vector<std::string> FetchedIndex::Read(const std::string& mailbox) const {
  if (directory_.empty()) return {};
  return Load(PathOf(mailbox)).value_or(std::vector<std::string>());
}

bool FetchedIndex::MakeDirectory() {
  return !directory_.empty() && files_.MakeDirectory(parent_) && files_.MakeDirectory(directory_);
}

std::unique_ptr<File> FetchedIndex::Lock() {
  return files_.Open(directory_ + "lock", OpenMode::kOwn);
}

bool FetchedIndex::Add(const std::string& mailbox, const std::vector<std::string>& identifiers) {
  const auto path = PathOf(mailbox);
  auto known = Load(path);
  if (!known) return false;
  std::set<std::string_view> fresh;
  for (const auto& identifier : identifiers) {
    if (IsUniqueId(identifier)) fresh.insert(identifier);
  }
  for (const auto& identifier : *known) fresh.erase(identifier);
  if (fresh.empty()) return true;
  known->insert(known->end(), fresh.begin(), fresh.end());
  if (known->size() > kMost) {
    known->erase(known->begin(), known->end() - static_cast<std::ptrdiff_t>(kMost));
  }
  return Store(path, *known);
}

bool FetchedIndex::Remove(const std::string& mailbox, const std::vector<std::string>& identifiers) {
  const auto path = PathOf(mailbox);
  auto known = Load(path);
  if (!known) return false;
  const std::set<std::string_view> gone(identifiers.begin(), identifiers.end());
  const auto removed =
      std::erase_if(*known, [&](const auto& identifier) { return gone.contains(identifier); });
  return removed == 0 || Store(path, *known);
}

std::optional<std::vector<std::string>> FetchedIndex::Load(const std::string& path) const {
  if (!files_.FileExists(path)) return std::vector<std::string>();
  const auto file = files_.Open(path, OpenMode::kRead);
  const auto size = file ? file->Size() : std::nullopt;
  if (!size) return std::nullopt;
  if (*size > kLargestFile) return std::vector<std::string>();
  std::string text(static_cast<std::size_t>(*size), '\0');
  const auto bytes = std::span(reinterpret_cast<std::uint8_t*>(text.data()), text.size());
  for (std::size_t used = 0; used < bytes.size();) {
    const auto count = file->Read(bytes.subspan(used));
    if (!count) return std::nullopt;
    if (*count == 0) return std::vector<std::string>();
    used += *count;
  }
  return IdentifiersIn(text);
}

// Through a second file, so that neither a full disk nor a power cut costs what is there.
bool FetchedIndex::Store(const std::string& path, const std::vector<std::string>& identifiers) {
  std::string text;
  for (const auto& identifier : identifiers) text += identifier + "\n";
  const auto fresh = path + ".new";
  auto file = files_.Open(fresh, OpenMode::kCreate);
  if (!file) return false;
  const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  const bool written = file->Write(bytes) && file->Flush();
  if (file->Close() && written && files_.RenameFile(fresh, path)) return true;
  file.reset();
  files_.RemoveFile(fresh);
  return false;
}

}  // namespace quillon
