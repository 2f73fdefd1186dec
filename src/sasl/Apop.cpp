#include "sasl/Apop.h"

#include <algorithm>

#include "core/HexDigit.h"

namespace quillon {
namespace {

bool IsIdentifier(std::string_view text) {
  return std::count(text.begin(), text.end(), '@') == 1 && !text.starts_with('@') &&
         !text.ends_with('@') && std::all_of(text.begin(), text.end(), [](char c) {
           return c > ' ' && c < '\x7F' && c != '<' && c != '>';
         });
}

}  // namespace

std::string_view ApopTimestamp(std::string_view greeting) {
  const auto open = greeting.find('<');
  if (open == std::string_view::npos) return {};
  const auto close = greeting.find('>', open);
  if (close == std::string_view::npos) return {};
  if (!IsIdentifier(greeting.substr(open + 1, close - open - 1))) return {};
  return greeting.substr(open, close - open + 1);
}

std::string ApopDigest(const Crypto& crypto, std::string_view timestamp,
                       std::string_view password) {
  std::string text(timestamp);
  text += password;
  return HexText(crypto.Digest(HashAlgorithm::kMd5, text));
}

}  // namespace quillon
