// The user's name-and-address books, those of his own and those of his servers. Each goes by its
// title; books of one title have their place behind it, as "Directory (Mail1/Acme!!names.nsf)",
// and a book that cannot be opened goes by its place alone. One that is open is good until the
// session ends. The client's own window cannot be opened by another program.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backends/notes/NotesSession.h"
#include "mail/AddressBooks.h"

namespace quillon {

class NotesAddressBooks final : public AddressBooks {
 public:
  // Runs an operation; `context` is what the box says of a failure.
  using Frame = std::function<MailResult(const MailRequest& request, const std::string& context,
                                         const std::function<void()>& operation)>;

  // The session and what the frame holds outlive this object and every open book.
  NotesAddressBooks(NotesSession& session, Frame frame)
      : session_(session), frame_(std::move(frame)) {}

  MailResult Names(MailRequest& request, std::vector<std::string>& names) override;
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override;

 private:
  struct NamedBook {
    AutomationObjectPtr object;
    std::string name;
  };
  std::vector<NamedBook> Books(const MailRequest& request);

  NotesSession& session_;
  Frame frame_;
};

}  // namespace quillon
