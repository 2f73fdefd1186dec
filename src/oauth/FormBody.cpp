#include "oauth/FormBody.h"

namespace quillon {
namespace {

bool StandsForItself(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
         c == '.' || c == '_' || c == '*';
}

}  // namespace

std::string FormEncoded(std::string_view text) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (const char c : text) {
    if (StandsForItself(c)) {
      encoded += c;
    } else if (c == ' ') {
      encoded += '+';
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += '%';
      encoded += kDigits[byte / 16];
      encoded += kDigits[byte % 16];
    }
  }
  return encoded;
}

std::string FormBody(std::initializer_list<std::pair<std::string_view, std::string_view>> fields) {
  std::string body;
  for (const auto& [name, value] : fields) {
    if (value.empty()) continue;
    if (!body.empty()) body += '&';
    body.append(name).append("=").append(FormEncoded(value));
  }
  return body;
}

}  // namespace quillon
