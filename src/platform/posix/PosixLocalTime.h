#pragma once

#include <ctime>

#include "ports/LocalClock.h"

namespace quillon {

LocalTime ToLocalTime(std::time_t time);

}  // namespace quillon
