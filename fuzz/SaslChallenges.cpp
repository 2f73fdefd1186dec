// A login with a server that says anything: it ends, what leaves is a word of base64 or "*", no
// secret is shown, and no server passes for one that knows the password. The first byte takes the
// mechanism; each line is a challenge.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "KnownCrypto.h"
#include "MemoryFiles.h"
#include "sasl/Choice.h"
#include "sasl/Exchange.h"

namespace {

using quillon::ExchangeLine;
using quillon::fuzz::Require;

constexpr std::string_view kNames[] = {
    "PLAIN",         "LOGIN",       "CRAM-MD5",         "XOAUTH2",           "OAUTHBEARER",
    "SCRAM-SHA-256", "SCRAM-SHA-1", "SCRAM-SHA-1-PLUS", "SCRAM-SHA-256-PLUS"};

constexpr std::string_view kSecret = "pencil-of-tim";

bool HoldsSecret(std::string_view text) {
  return text.find(kSecret) != std::string_view::npos;
}

// What follows on a challenge. Whether the exchange goes on.
bool CheckAnswer(const ExchangeLine& answer) {
  Require(!HoldsSecret(answer.shown) && !HoldsSecret(answer.failure));
  if (!answer.failure.empty()) {
    Require(answer.line == "*");
    return false;
  }
  Require(quillon::BytesOfBase64Word(answer.line.value()).has_value());
  return true;
}

std::string_view TakeLine(std::string_view& text) {
  const auto end = std::min(text.find('\n'), text.size());
  const auto line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const quillon::fuzz::KnownCrypto crypto;
  static const quillon::Credentials credentials{"", "tim", std::string(kSecret),
                                                std::string(kSecret)};
  static const quillon::ConnectionFacts connection{
      "mail.example.com", 587, true, {"tls-server-end-point", "data"}};
  if (size == 0) return 0;
  std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string name(kNames[data[0] % std::size(kNames)]);
  const auto mechanism =
      quillon::ChooseMechanism({name}, {{name}, false}, {credentials, connection, crypto})
          .mechanism;
  quillon::Exchange exchange(*mechanism, data[0] < 128 ? quillon::kLongestPopAuth : 0);
  Require(exchange.Begin().failure.empty());
  int rounds = 0;
  bool goesOn = true;
  while (goesOn && !text.empty()) {
    goesOn = CheckAnswer(exchange.Answer(TakeLine(text)));
    Require(++rounds <= quillon::Exchange::kMostChallenges + 1);
  }
  const std::string failure = exchange.Succeeded();
  Require(goesOn || !failure.empty());
  Require(!name.starts_with("SCRAM") || !failure.empty());
  Require(!HoldsSecret(failure) && !HoldsSecret(exchange.Reason()));
  return 0;
}
