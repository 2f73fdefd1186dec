#include "mail/AddressBooks.h"

#include "core/ErrorCode.h"

namespace quillon {

ServerError NoSuchAddressBook() {
  return ServerError(error_code::kInvalidValue, "Address book does not exist.");
}

MailResult AddressBooks::Show(MailRequest&, AddressChoice&) {
  throw ServerError(error_code::kAddressBookFunction);
}

}  // namespace quillon
