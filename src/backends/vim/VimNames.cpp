#include "backends/vim/VimNames.h"

#include <cstddef>

#include "backends/vim/VimEnumeration.h"
#include "backends/vim/VimFailure.h"

namespace quillon {

namespace {

constexpr std::size_t kMostBooks = 1000;

// Address books that are open, closed with this object.
class OpenBooks {
 public:
  explicit OpenBooks(Vim& library) : library_(library) {}
  OpenBooks(const OpenBooks&) = delete;
  OpenBooks& operator=(const OpenBooks&) = delete;
  ~OpenBooks() {
    for (const auto book : list_) library_.CloseAddressBook(book);
  }

  void Open(vim::Handle session, const std::string& name) {
    list_.push_back(0);
    const auto status = library_.OpenAddressBook(session, name, list_.back());
    if (status != vim::kSuccess) list_.pop_back();
    CheckVim(status);
  }
  const std::vector<vim::Handle>& List() const noexcept { return list_; }

 private:
  Vim& library_;
  std::vector<vim::Handle> list_;
};

bool MeansNoMatch(vim::Status status) {
  return status == vim::kNoMatch || status == vim::kNameNotFound;
}

}  // namespace

std::vector<std::string> VimBookNames(Vim& library, vim::Handle session) {
  return EnumerateVim<std::string>(
      kMostBooks, {}, [&](VimPosition& position, std::vector<std::string>& found, bool& more) {
        return library.EnumerateAddressBooks(session, position, found, more);
      });
}

std::optional<VimEntry> FindVimName(Vim& library, vim::Handle session, const std::string& name) {
  OpenBooks books(library);
  for (const auto& book : VimBookNames(library, session)) books.Open(session, book);
  for (const auto match : {vim::kFull, vim::kPartial}) {
    for (const auto book : books.List()) {
      VimReference reference;
      const auto status = library.MatchAddressBook(book, name, match, reference);
      if (MeansNoMatch(status)) continue;
      CheckVim(status);
      VimEntry entry;
      CheckVim(library.GetABEntryAttributes(book, reference, entry));
      return entry;
    }
  }
  return std::nullopt;
}

}  // namespace quillon
