#include "backends/mhs/SmfAddress.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr std::string_view kWhite = " \t";

// Without white space around it, and with one blank for each run of it inside.
std::string Collapsed(std::string_view text) {
  std::string collapsed;
  for (const char c : text) {
    const bool isWhite = kWhite.find(c) != std::string_view::npos;
    if (!isWhite) {
      collapsed += c;
    } else if (!collapsed.empty() && collapsed.back() != ' ') {
      collapsed += ' ';
    }
  }
  if (collapsed.ends_with(' ')) collapsed.pop_back();
  return collapsed;
}

// One address, taken off the field with the comma behind it.
RecipientParts TakeAddress(std::string_view& field) {
  std::string address;
  std::string comment;
  std::size_t depth = 0;  // of parentheses
  bool inBraces = false;
  std::size_t at = 0;
  for (; at < field.size(); ++at) {
    const char c = field[at];
    if (depth == 0 && !inBraces && c == ',') break;
    if (!inBraces && c == '(' && depth++ == 0) continue;
    if (depth > 0 && c == ')' && --depth == 0) continue;
    if (depth > 0) {
      comment += c;
      continue;
    }
    if (c == '{') inBraces = true;
    if (c == '}') inBraces = false;
    address += c;
  }
  field.remove_prefix(std::min(at + 1, field.size()));
  return {Collapsed(comment), Collapsed(address)};
}

}  // namespace

std::vector<RecipientParts> ParseSmfAddresses(std::string_view field) {
  std::vector<RecipientParts> addresses;
  while (!field.empty()) {
    auto parts = TakeAddress(field);
    if (!parts.name.empty() || !parts.address.empty()) addresses.push_back(std::move(parts));
  }
  return addresses;
}

std::string FormatSmfAddress(const RecipientParts& parts) {
  auto name = parts.name;
  std::replace(name.begin(), name.end(), '(', '[');
  std::replace(name.begin(), name.end(), ')', ']');
  return name.empty() ? parts.address : parts.address + " (" + name + ")";
}

bool IsSmfAddress(std::string_view address) {
  const auto brace = address.find('{');
  const auto plain = address.substr(0, brace);
  const bool bracesMatch = brace == std::string_view::npos
                               ? address.find('}') == std::string_view::npos
                               : address.find('}') == address.size() - 1 &&
                                     address.find('{', brace + 1) == std::string_view::npos;
  const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == 127; };
  return bracesMatch && !plain.empty() &&
         plain.find_first_of(",()<>\"?") == std::string_view::npos &&
         address.find('?') == std::string_view::npos &&
         std::none_of(address.begin(), address.end(), isControl);
}

}  // namespace quillon
