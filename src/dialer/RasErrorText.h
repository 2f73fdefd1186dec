// The text of a number of the Remote Access Service.
#pragma once

#include <cstdint>
#include <string>

#include "ports/Ras.h"

namespace quillon {

// As the service has it, or else one that says why there is none.
std::string RasErrorText(Ras& library, std::uint32_t number);

}  // namespace quillon
