// Writes messages of SMF-70.
#pragma once

#include <string>

#include "backends/mhs/SmfMessage.h"

namespace quillon {

// Every line ends in CR LF. A field whose line is long is folded where it has a single blank, so
// that it reads back as it was; no value can begin a line of its own.
std::string WriteSmf(const SmfMessage& message);

}  // namespace quillon
