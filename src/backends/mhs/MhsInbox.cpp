#include "backends/mhs/MhsInbox.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "backends/mhs/MhsErrorText.h"
#include "backends/mhs/MhsFailure.h"
#include "backends/mhs/MhsNames.h"
#include "backends/mhs/SmfReader.h"
#include "codec/BlockIo.h"

namespace quillon {

namespace {

constexpr const char* kOpenFailed = "Error opening the directory of the user";
constexpr const char* kMessageFailed = "Error getting mail message";
constexpr const char* kDeleteFailed = "Error deleting mail message";

constexpr std::size_t kFirstBlock = 8 * 1024;
constexpr std::size_t kIdentifying = 4 * 1024;  // so many bytes of a message are its own
constexpr std::uint64_t kMostMessage = 64U * 1024 * 1024;

// The FNV-1a hash of the beginning and the size.
std::uint64_t IdentityOf(std::string_view bytes, std::uint64_t size) {
  auto hash = 0xCBF29CE484222325ULL;
  const auto take = [&hash](std::uint8_t byte) { hash = (hash ^ byte) * 0x100000001B3ULL; };
  for (const char c : bytes.substr(0, kIdentifying)) take(static_cast<std::uint8_t>(c));
  for (int shift = 0; shift < 64; shift += 8) take(static_cast<std::uint8_t>(size >> shift));
  return hash;
}

// Up to `most` bytes from where the file stands; fewer when it ends or cannot be read on.
void ReadMore(File& file, std::size_t most, std::string& bytes) {
  const auto before = bytes.size();
  bytes.resize(most);
  const auto count =
      ReadBlock(file, {reinterpret_cast<std::uint8_t*>(bytes.data()) + before, most - before});
  bytes.resize(before + count.value_or(0));
}

// The head ends for certain only where lines follow that are no part of it.
std::optional<SmfMessage> ReadHead(File& file, std::string& bytes) {
  for (auto most = kFirstBlock;; most = kMostSmfHead) {
    ReadMore(file, most, bytes);
    const bool isWhole = bytes.size() < most;
    const auto lines = isWhole ? bytes.size() : bytes.rfind('\n') + 1;
    auto message = ReadSmf(std::string_view(bytes).substr(0, lines));
    if (isWhole || most == kMostSmfHead || !message || message->headSize < lines) return message;
  }
}

}  // namespace

MhsInbox::MhsInbox(FileSystem& files, const MhsAccount& account) : files_(files) {
  const auto separator = files_.Separator();
  const auto user = account.directory + "USERS" + separator + account.user;
  if (!IsDirectoryName(account.user) || !IsDirectoryName(account.application) ||
      !files_.DirectoryExists(user)) {
    throw MhsFailure(kOpenFailed, mhs::kUnknownUser);
  }
  directory_ = user + separator + account.application + separator;
  parcels_ = account.directory + "PARCEL" + separator;
}

std::vector<std::string> MhsInbox::Names() const {
  std::vector<std::string> names;
  auto entries = files_.List(directory_, {});
  names.reserve(entries.size());
  for (auto& entry : entries) {
    if (!entry.isDirectory && IsMessageName(entry.name)) names.push_back(std::move(entry.name));
  }
  return names;
}

std::optional<MhsHead> MhsInbox::Head(const std::string& name) const {
  const auto file = files_.Open(directory_ + name, OpenMode::kRead);
  const auto size = file != nullptr ? file->Size() : std::nullopt;
  if (!size) return std::nullopt;
  std::string bytes;
  auto message = ReadHead(*file, bytes);
  if (!message) return std::nullopt;
  return MhsHead{std::move(*message), *size, IdentityOf(bytes, *size), file->ModificationTime()};
}

SmfMessage MhsInbox::Read(const std::string& name, std::uint64_t identity) const {
  const auto file = files_.Open(directory_ + name, OpenMode::kRead);
  if (file == nullptr) throw MhsFailure(kMessageFailed, mhs::kMessageGone);
  const auto size = file->Size();
  if (!size) throw MhsFailure(kMessageFailed, mhs::kCannotRead);
  if (*size > kMostMessage) throw MhsFailure(kMessageFailed, mhs::kTooLong);
  std::string bytes;
  ReadMore(*file, static_cast<std::size_t>(*size), bytes);
  if (bytes.size() != *size) throw MhsFailure(kMessageFailed, mhs::kCannotRead);
  auto message = ReadSmf(bytes);
  if (!message || IdentityOf(bytes, *size) != identity) {
    throw MhsFailure(kMessageFailed, mhs::kMessageGone);
  }
  return std::move(*message);
}

void MhsInbox::Delete(const std::string& name, std::uint64_t identity) const {
  const auto head = Head(name);
  if (!head || head->identity != identity) throw MhsFailure(kDeleteFailed, mhs::kMessageGone);
  if (!files_.RemoveFile(directory_ + name)) throw MhsFailure(kDeleteFailed, mhs::kCannotDelete);
  bool removed = true;
  for (const auto& attachment : SmfAttachments(head->message)) {
    if (!IsParcelName(attachment.parcel)) continue;
    removed = files_.RemoveFile(parcels_ + attachment.parcel) && removed;
  }
  if (!removed) throw MhsFailure(kDeleteFailed, mhs::kParcelNotDeleted);
}

std::string MhsInbox::ParcelPath(const std::string& parcel) const {
  auto path = parcels_ + parcel;
  if (!IsParcelName(parcel) || !files_.FileExists(path)) {
    throw MhsFailure(kMessageFailed, mhs::kNoAttachment);
  }
  return path;
}

}  // namespace quillon
