#include "backends/mhs/MhsAddressBooks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <unordered_set>
#include <utility>

#include "backends/mhs/MhsErrorText.h"
#include "backends/mhs/MhsFailure.h"
#include "backends/mhs/MhsNames.h"
#include "backends/mhs/NetDirTable.h"
#include "codec/BlockIo.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr const char* kReadFailed = "Error reading the address book";

constexpr std::size_t kPiece = 4096;
constexpr std::uint64_t kMostOfTable = 16U * 1024 * 1024;
constexpr std::size_t kUsersAtOnce = 50;

class MhsOpenBook final : public OpenAddressBook {
 public:
  MhsOpenBook(FileSystem& files, const CodePage& codePage, const MhsAddressBooks::Frame& frame,
              MhsAccount account)
      : files_(files), codePage_(codePage), frame_(frame), account_(std::move(account)) {}

  MailResult Fetch(MailRequest& request, std::vector<AddressEntry>& entries, bool& more) override {
    if (!request.instance.session.loggedIn) throw ServerError(error_code::kAddressBookClosed);
    return frame_(request, [&](const MhsAccount& account) {
      if (account.directory != account_.directory || account.user != account_.user) {
        throw ServerError(error_code::kAddressBookClosed);
      }
      const auto before = entries.size();
      while (HasMore() && entries.size() == before) {
        if (tableRead_) {
          FetchUsers(entries);
        } else {
          FetchTable(entries);
        }
      }
      more = HasMore();
    });
  }

 private:
  bool HasMore() const { return !tableRead_ || !listed_ || nextUser_ < users_.size(); }

  void FetchTable(std::vector<AddressEntry>& entries) {
    const auto path = account_.directory + "PUBLIC" + files_.Separator() + "NETDIR.TAB";
    const auto file = files_.Open(path, OpenMode::kRead);
    if (file == nullptr && !files_.FileExists(path)) {
      tableRead_ = true;
      return;
    }
    std::array<char, kPiece> bytes{};
    const bool found = file != nullptr && file->Seek(offset_);
    const auto count =
        found ? ReadBlock(*file, {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()})
              : std::nullopt;
    if (!count) throw MhsFailure(kReadFailed, mhs::kBookNotRead);
    const bool isLast = *count < bytes.size();
    const auto read = ReadNetDir({bytes.data(), *count}, isLast, isCut_);
    offset_ += read.bytes;
    isCut_ = read.isCut;
    tableRead_ = isLast || read.isEnd || offset_ >= kMostOfTable;
    for (const auto& entry : read.entries) {
      Add(codePage_.ToText(entry.name), codePage_.ToText(entry.address), entries);
    }
  }

  void FetchUsers(std::vector<AddressEntry>& entries) {
    if (!listed_) ListUsers();
    listed_ = true;
    const auto end = std::min(nextUser_ + kUsersAtOnce, users_.size());
    for (; nextUser_ < end; ++nextUser_) {
      const auto& user = users_[nextUser_];
      Add(user, account_.workgroup.empty() ? user : user + "@" + account_.workgroup, entries);
    }
  }

  // In an order that does not depend on the system.
  void ListUsers() {
    for (auto& entry : files_.List(account_.directory + "USERS", {})) {
      if (entry.isDirectory && IsDirectoryName(entry.name)) users_.push_back(std::move(entry.name));
    }
    std::sort(users_.begin(), users_.end(), [](const auto& left, const auto& right) {
      return UpperAscii(left) < UpperAscii(right);
    });
  }

  void Add(const std::string& name, const std::string& address,
           std::vector<AddressEntry>& entries) {
    if (!seen_.insert(UpperAscii(address)).second) return;
    entries.push_back({name, address, false});
  }

  FileSystem& files_;
  const CodePage& codePage_;
  const MhsAddressBooks::Frame& frame_;
  MhsAccount account_;
  std::uint64_t offset_ = 0;  // in the table, of what comes next
  bool isCut_ = false;
  bool tableRead_ = false;
  bool listed_ = false;
  std::vector<std::string> users_;
  std::size_t nextUser_ = 0;
  std::unordered_set<std::string> seen_;
};

}  // namespace

MailResult MhsAddressBooks::Names(MailRequest& request, std::vector<std::string>& names) {
  return frame_(request, [&](const MhsAccount&) { names = {kMhsBook}; });
}

MailResult MhsAddressBooks::Open(MailRequest& request, const std::string& name,
                                 std::unique_ptr<OpenAddressBook>& book) {
  return frame_(request, [&](const MhsAccount& account) {
    if (!name.empty() && !EqualsIgnoreCase(name, kMhsBook)) {
      throw NoSuchAddressBook();
    }
    book = std::make_unique<MhsOpenBook>(files_, codePage_, frame_, account);
  });
}

}  // namespace quillon
