#include "sasl/Exchange.h"

#include <utility>

#include "codec/Base64Word.h"
#include "core/Text.h"
#include "ports/Crypto.h"

namespace quillon {
namespace {

constexpr std::size_t kLineEnd = 2;

// What the system refuses is a failure of the mechanism like others.
template <class Ask>
auto Asked(Ask ask) -> decltype(ask()) {
  try {
    return ask();
  } catch (const CryptoError& error) {
    return FailLogin(error.what());
  }
}

ExchangeLine Say(std::string line, std::string shown) {
  return {std::move(line), std::move(shown), {}};
}

}  // namespace

ExchangeLine Exchange::Begin() {
  auto first = Asked([this] { return mechanism_.Begin(); });
  if (first && first->Failed()) {
    failure_ = std::move(first->failure);
    return {std::nullopt, {}, failure_};
  }
  std::string command = "AUTH " + std::string(mechanism_.Name());
  if (!first) return Say(command, command);
  // RFC 4954, 4: "=" is the empty one.
  const std::string word = first->response.empty() ? "=" : Base64Word(first->response);
  if (mechanism_.WaitsForServer() ||
      command.size() + 1 + word.size() + kLineEnd > longestCommand_) {
    initial_ = std::move(first->response);
    return Say(command, command);
  }
  return Say(command + ' ' + word, command + " ****");
}

ExchangeLine Exchange::Answer(std::string_view challenge) {
  if (!failure_.empty()) return {std::nullopt, {}, failure_};
  if (++challenges_ > kMostChallenges) return Cancel("The server's login does not come to an end.");
  auto step = NextStep(challenge);
  if (step.Failed()) return Cancel(std::move(step.failure));
  if (step.response.empty()) return Say({}, {});
  return Say(Base64Word(step.response), "****");
}

SaslStep Exchange::NextStep(std::string_view challenge) {
  if (initial_) {
    // Servers put words here instead of nothing; they mean nothing.
    SaslStep step = Respond(*std::move(initial_));
    initial_.reset();
    return step;
  }
  challenge = Trim(challenge);
  if (challenge.size() > kLongestChallenge) return FailLogin("The server's challenge is too long.");
  const auto bytes = BytesOfBase64Word(challenge);
  if (!bytes) return FailLogin("The server's challenge is not base64.");
  return Asked([&] { return mechanism_.Answer(*bytes); });
}

ExchangeLine Exchange::Cancel(std::string reason) {
  failure_ = std::move(reason);
  return {"*", "*", failure_};
}

std::string Exchange::Succeeded() {
  if (!failure_.empty()) return failure_;
  if (initial_) return "The server reports a login before it knows who logs in.";
  return Asked([this] { return mechanism_.Succeeded({}); }).failure;
}

std::string Exchange::Reason() const {
  return failure_.empty() ? mechanism_.ServerReason() : failure_;
}

}  // namespace quillon
