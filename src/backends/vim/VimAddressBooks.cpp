#include "backends/vim/VimAddressBooks.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "backends/vim/VimEnumeration.h"
#include "backends/vim/VimNames.h"
#include "backends/vim/VimOperation.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

namespace {

constexpr std::size_t kEntriesAtOnce = 50;

class VimOpenBook final : public OpenAddressBook {
 public:
  VimOpenBook(Vim& library, VimSessions& sessions, const Diagnostic& diagnostic,
              std::uint64_t session, vim::Handle handle)
      : library_(library),
        sessions_(sessions),
        diagnostic_(diagnostic),
        session_(session),
        handle_(handle) {}
  VimOpenBook(const VimOpenBook&) = delete;
  VimOpenBook& operator=(const VimOpenBook&) = delete;
  ~VimOpenBook() override { sessions_.CloseBook(session_, handle_); }

  MailResult Fetch(MailRequest& request, std::vector<AddressEntry>& entries, bool& more) override {
    if (sessions_.NumberOf(request.instance) != session_ || HasEnded()) {
      throw ServerError(error_code::kAddressBookClosed);
    }
    return RunVim(diagnostic_, request, [&] { FetchNext(entries, more); });
  }

  bool HasEnded() const override { return !sessions_.HasBook(session_, handle_); }

 private:
  // After a failure the same entries come again.
  void FetchNext(std::vector<AddressEntry>& entries, bool& more) {
    auto position = position_;
    auto fetched = EnumerateVimFrom<VimEntry>(
        position, more, kEntriesAtOnce, {},
        [&](VimPosition& at, std::vector<VimEntry>& found, bool& left) {
          return library_.EnumerateAddressBookEntries(handle_, at, found, left);
        });
    position_ = position;
    count_ += fetched.size();
    if (count_ >= kMostVimEntries) more = false;
    entries.reserve(entries.size() + fetched.size());
    for (auto& entry : fetched) {
      entries.push_back({std::move(entry.name), std::move(entry.address), entry.isGroup});
    }
  }

  Vim& library_;
  VimSessions& sessions_;
  const Diagnostic& diagnostic_;
  std::uint64_t session_;
  vim::Handle handle_;
  VimPosition position_;
  std::size_t count_ = 0;
};

}  // namespace

std::unique_ptr<OpenAddressBook> VimAddressBooks::OpenNamed(const MailRequest& request,
                                                            const std::string& name) {
  try {
    const auto handle = sessions_.OpenBook(request.instance, name);
    return std::make_unique<VimOpenBook>(library_, sessions_, diagnostic_,
                                         sessions_.NumberOf(request.instance), handle);
  } catch (const VimFailure& failure) {
    if (failure.Number() == vim::kNameNotFound) throw NoSuchAddressBook();
    throw;
  }
}

MailResult VimAddressBooks::Names(MailRequest& request, std::vector<std::string>& names) {
  return RunVim(diagnostic_, request, [&] {
    sessions_.OpenOnDemand(request);
    names = VimBookNames(library_, VimSessions::HandleOf(request.instance));
  });
}

MailResult VimAddressBooks::Open(MailRequest& request, const std::string& name,
                                 std::unique_ptr<OpenAddressBook>& book) {
  return RunVim(diagnostic_, request, [&] {
    sessions_.OpenOnDemand(request);
    auto wanted = name;
    if (wanted.empty()) {
      const auto names = VimBookNames(library_, VimSessions::HandleOf(request.instance));
      if (names.empty()) throw NoSuchAddressBook();
      wanted = names.front();
    }
    book = OpenNamed(request, wanted);
  });
}

}  // namespace quillon
