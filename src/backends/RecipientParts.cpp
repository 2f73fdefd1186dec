#include "backends/RecipientParts.h"

#include "core/RecipientText.h"
#include "core/Text.h"

namespace quillon {

RecipientParts SplitRecipient(std::string_view text) {
  text = Trim(text);
  const auto open = LastBracket(text);
  const auto close = text.find('>', open == std::string_view::npos ? text.size() : open);
  if (open == std::string_view::npos || close == std::string_view::npos) {
    return {std::string(text), {}};
  }
  auto name = Trim(text.substr(0, open));
  const auto address = Trim(text.substr(open + 1, close - open - 1));
  if (name.size() >= 2 && name.front() == '"' && name.back() == '"') {
    name = Trim(name.substr(1, name.size() - 2));
  }
  if (name.empty() || address.empty()) return {std::string(text), {}};
  return {std::string(name), std::string(address)};
}

std::string FormatRecipient(const std::string& name, const std::string& address) {
  const auto trimmed = TrimmedCopy(address);
  return trimmed.empty() ? name : name + " <" + trimmed + ">";
}

}  // namespace quillon
