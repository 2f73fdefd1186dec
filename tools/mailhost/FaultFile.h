// The files given with --faults.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Conversation.h"
#include "FaultRules.h"

namespace mailhost {

struct Faults {
  std::vector<FaultRule> rules{};
  // Played to every connection of the protocol, in place of the service.
  std::optional<Conversation> smtp{};
  std::optional<Conversation> pop{};
};

// Adds what `file` says. Throws UsageError.
void LoadFaults(const std::string& file, Faults& faults);

}  // namespace mailhost
