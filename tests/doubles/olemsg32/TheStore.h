// The store that all objects of the process work on.
#pragma once

#include "desk/Store.h"

namespace desk {

Store& TheStore();

}  // namespace desk
