#include "sasl/GssapiMechanism.h"

#include <cstddef>
#include <string>

#include "sasl/SaslText.h"
#include "sasl/SystemLogins.h"

namespace quillon {
namespace {

constexpr unsigned kNoLayer = 1;
constexpr std::size_t kOfferSize = 4;  // the layers, and how long a message may be

}  // namespace

GssapiMechanism::GssapiMechanism(const LoginContext& context)
    : credentials_(context.credentials),
      system_(BeginSystemLogin(SystemPackage::kNegotiate, context)) {}

SaslStep GssapiMechanism::Answer(std::string_view challenge) {
  switch (state_) {
    case State::kLogin:
      return Advance(challenge);
    case State::kWaitsForLayers:
      return ChooseLayer(challenge);
    default:
      state_ = State::kFailed;
      return FailLogin("The server asks for more than the login method GSSAPI has.");
  }
}

SaslStep GssapiMechanism::Advance(std::string_view challenge) {
  auto step = system_->Advance(challenge);
  if (step.complete) state_ = State::kWaitsForLayers;
  if (!step.failure.empty()) state_ = State::kFailed;
  return {std::move(step.response), std::move(step.failure)};
}

// RFC 4752, 3.1 and 3.3.
SaslStep GssapiMechanism::ChooseLayer(std::string_view offer) {
  state_ = State::kFailed;
  const auto layers = system_->Unwrap(offer);
  if (!layers || layers->size() != kOfferSize) {
    return FailLogin("The server's offer at the end of the GSSAPI login is malformed.");
  }
  if ((static_cast<unsigned char>(layers->front()) & kNoLayer) == 0) {
    return FailLogin("The server insists on a security layer of GSSAPI, which is not known here.");
  }
  if (!IsSaslText(credentials_.authorization)) {
    return FailLogin("The name to act as holds a control character.");
  }
  // No layer, so no message has a length.
  const std::string choice("\1\0\0\0", kOfferSize);
  auto wrapped = system_->Wrap(choice + credentials_.authorization);
  if (!wrapped) return FailLogin("The system does not sign the end of the GSSAPI login.");
  state_ = State::kOver;
  return Respond(*std::move(wrapped));
}

SaslStep GssapiMechanism::Succeeded(std::string_view) {
  if (state_ == State::kOver) return {};
  return FailLogin("The server reports a login before that of GSSAPI has come to its end.");
}

}  // namespace quillon
