#include "sasl/ScramMessage.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "codec/Base64Word.h"

namespace quillon {
namespace {

constexpr std::string_view kMalformed = "The server's message in the SCRAM login is malformed.";

// The attributes of a message, one after the other.
class Attributes {
 public:
  explicit Attributes(std::string_view message) : rest_(message) {}

  // The value of the next attribute when it is this one.
  std::optional<std::string_view> Take(char letter) {
    if (ended_ || rest_.size() < 2 || rest_[0] != letter || rest_[1] != '=') return std::nullopt;
    const auto comma = std::min(rest_.find(','), rest_.size());
    const auto value = rest_.substr(2, comma - 2);
    ended_ = comma == rest_.size();
    rest_.remove_prefix(ended_ ? comma : comma + 1);
    return value;
  }

  // Whether there is nothing left but extensions, which may be passed over. RFC 5802, 5.1, keeps
  // the letters of its own attributes from being that, "m" first, which means that one must not.
  bool OnlyExtensionsLeft() {
    while (!ended_) {
      const char letter = rest_.empty() ? '\0' : rest_.front();
      const bool isLetter = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
      if (!isLetter || std::string_view("anmrcsipve").find(letter) != std::string_view::npos) {
        return false;
      }
      const auto value = Take(letter);
      if (!value || value->empty()) return false;
    }
    return true;
  }

 private:
  std::string_view rest_;
  bool ended_ = false;
};

// Printable ASCII without the comma.
bool IsNonce(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7F'; });
}

// None when it is no number or out of bounds.
std::optional<std::uint32_t> IterationCount(std::string_view digits) {
  std::uint32_t count = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, count);
  if (read.ec != std::errc() || read.ptr != end || digits.front() == '0') return std::nullopt;
  if (count < kFewestIterations || count > kMostIterations) return std::nullopt;
  return count;
}

ScramServerFirst Refuse(std::string_view reason) {
  ScramServerFirst refused;
  refused.failure = reason;
  return refused;
}

}  // namespace

ScramServerFirst ReadScramServerFirst(std::string_view message, std::string_view clientNonce) {
  if (message.starts_with("m=")) {
    return Refuse("The server wants an extension of the SCRAM login that is not known here.");
  }
  Attributes attributes(message);
  const auto nonce = attributes.Take('r');
  const auto saltWord = nonce ? attributes.Take('s') : std::nullopt;
  const auto digits = saltWord ? attributes.Take('i') : std::nullopt;
  if (!digits || digits->empty() || !attributes.OnlyExtensionsLeft() || !IsNonce(*nonce)) {
    return Refuse(kMalformed);
  }
  if (!nonce->starts_with(clientNonce) || nonce->size() == clientNonce.size()) {
    return Refuse(
        "The server's message in the SCRAM login answers another login: its nonce does not "
        "continue "
        "the client's.");
  }
  auto salt = BytesOfBase64Word(*saltWord);
  if (!salt || salt->empty()) return Refuse(kMalformed);
  const auto iterations = IterationCount(*digits);
  if (!iterations) {
    return Refuse(
        "The server wants a number of iterations in the SCRAM login that is not between " +
        std::to_string(kFewestIterations) + " and " + std::to_string(kMostIterations) + ".");
  }
  return {std::string(*nonce), *std::move(salt), *iterations, {}};
}

ScramServerFinal ReadScramServerFinal(std::string_view message) {
  Attributes attributes(message);
  if (const auto error = attributes.Take('e')) return {{}, std::string(*error), {}};
  const auto word = attributes.Take('v');
  if (!word || !attributes.OnlyExtensionsLeft()) return {{}, {}, std::string(kMalformed)};
  auto signature = BytesOfBase64Word(*word);
  if (!signature || signature->empty()) return {{}, {}, std::string(kMalformed)};
  return {*std::move(signature), {}, {}};
}

}  // namespace quillon
