// The one address book of MHS: who stands in NETDIR.TAB, then the users of the mail directory who
// do not stand there. Nothing is held open, and what others change meanwhile shows from there on.
// A book is good as long as the Server is logged in to the account it was opened with.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backends/mhs/MhsAccount.h"
#include "mail/AddressBooks.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"

namespace quillon {

inline constexpr const char* kMhsBook = "MHS";

class MhsAddressBooks final : public AddressBooks {
 public:
  // Runs an operation for the account of the client.
  using Frame = std::function<MailResult(MailRequest& request,
                                         const std::function<void(const MhsAccount&)>& operation)>;

  // `files`, `codePage` and what the frame holds outlive this object and every open book.
  MhsAddressBooks(FileSystem& files, const CodePage& codePage, Frame frame)
      : files_(files), codePage_(codePage), frame_(std::move(frame)) {}

  MailResult Names(MailRequest& request, std::vector<std::string>& names) override;
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override;

 private:
  FileSystem& files_;
  const CodePage& codePage_;
  Frame frame_;
};

}  // namespace quillon
