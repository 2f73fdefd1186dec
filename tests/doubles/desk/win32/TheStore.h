// The store that all objects of the process work on.
#pragma once

#include <mutex>

#include "desk/Store.h"

namespace desk {

Store& TheStore();

// The store is for one thread at a time, and each apartment of a program has a thread.
// A client's object that is handed in may call back.
std::recursive_mutex& StoreMutex();

}  // namespace desk
