#pragma once

#include <ctime>

#include "platform/LocalClock.h"

namespace quillon {

LocalTime ToLocalTime(std::time_t time);

}  // namespace quillon
