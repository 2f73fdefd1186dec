#include "LoginDialogue.h"

#include <algorithm>

#include "Digest.h"
#include "Text.h"

namespace mailhost {

LoginDialogue::Answer LoginDialogue::Begin(std::string_view argument, const TlsSession* tls) {
  const std::string name = ToUpper(TakeWord(argument));
  const std::vector<std::string> offered = OfferedMechanisms(service_, tls);
  if (std::find(offered.begin(), offered.end(), name) == offered.end()) return {Kind::kUnknown};
  const bool offersBinding = std::any_of(offered.begin(), offered.end(),
                                         [](const auto& one) { return FindMechanism(one)->binds; });
  mechanism_ = FindMechanism(name)->make({service_.account, tls, offersBinding});
  if (argument.empty()) return Next(std::nullopt);
  // "=" is an empty response, which would be no argument otherwise.
  return Continue(argument == "=" ? std::string_view() : argument);
}

LoginDialogue::Answer LoginDialogue::Continue(std::string_view line) {
  if (line == "*") {
    mechanism_.reset();
    return {Kind::kCancelled};
  }
  const std::optional<std::string> response = FromBase64(line);
  if (response) return Next(*response);
  mechanism_.reset();
  return {Kind::kMalformed};
}

LoginDialogue::Answer LoginDialogue::Next(std::optional<std::string_view> response) {
  LoginStep step = mechanism_->Next(response);
  if (step.kind == LoginStep::Kind::kChallenge) {
    return {Kind::kChallenge, Base64(step.challenge)};
  }
  mechanism_.reset();
  return {step.kind == LoginStep::Kind::kAccepted ? Kind::kAccepted : Kind::kRefused};
}

}  // namespace mailhost
