#include "core/ServerWords.h"

#include <cstddef>

namespace quillon {

namespace {

// RFC 1939, 3, and RFC 5321, 4.5.3.1.5.
constexpr std::size_t kLongestReply = 512;

bool IsControl(char c) {
  return (static_cast<unsigned char>(c) < ' ') || c == 127;
}

}  // namespace

std::string WithoutSecret(std::string_view text, std::string_view secret) {
  std::string shown;
  for (auto found = text.find(secret); !secret.empty() && found != std::string_view::npos;
       found = text.find(secret)) {
    shown.append(text.substr(0, found)).append("****");
    text.remove_prefix(found + secret.size());
  }
  return shown.append(text);
}

std::string ServerWords(std::string_view text) {
  std::string words;
  bool inRun = false;
  for (const char c : text.substr(0, kLongestReply)) {
    if (!IsControl(c)) {
      words += c;
    } else if (!inRun) {
      words += ' ';
    }
    inRun = IsControl(c);
  }
  return words;
}

}  // namespace quillon
