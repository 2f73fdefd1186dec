// The parameters of MAIL and RCPT: which a host knows, and which go into the envelope.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Service.h"

namespace mailhost {

struct ReadParameters {
  std::string refusal{};  // the reply to a parameter that is wrong; empty when all are good
  std::string kept{};     // for the envelope, each with a blank before it
};

// True when `keyword` is among the capabilities of EHLO, with a value or without.
bool HasCapability(const Service& service, std::string_view keyword);
// What the capability SIZE says; empty when there is no limit.
std::optional<std::uint64_t> SizeLimit(const Service& service);

ReadParameters ReadMailParameters(const std::vector<std::string>& parameters,
                                  const Service& service);
ReadParameters ReadRcptParameters(const std::vector<std::string>& parameters,
                                  const Service& service);

}  // namespace mailhost
