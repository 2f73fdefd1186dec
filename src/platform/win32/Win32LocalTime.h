#pragma once

#include <windows.h>

#include "ports/LocalClock.h"

namespace quillon {

// `utc` as the local time of this machine, by the rule of summer time that holds at that moment.
LocalTime ToLocalTime(const SYSTEMTIME& utc);

}  // namespace quillon
