// A recipient as clients write it, and as mail systems want it: a name and an address.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

struct RecipientParts {
  std::string name;
  std::string address;  // empty: the mail system looks the name up
};

// "Joe <joe@example.com>" has both. Any other text is a name, also an address without a name before
// it. Quotes around the name go.
RecipientParts SplitRecipient(std::string_view text);

// The other way round: the name alone when there is no address.
std::string FormatRecipient(const std::string& name, const std::string& address);

}  // namespace quillon
