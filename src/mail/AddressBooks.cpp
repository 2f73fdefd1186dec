#include "mail/AddressBooks.h"

#include "core/ErrorCode.h"

namespace quillon {

MailResult AddressBooks::Show(MailRequest&, AddressChoice&) {
  throw ServerError(error_code::kAddressBookFunction);
}

}  // namespace quillon
