#include "desk/win32/TheStore.h"

namespace desk {

Store& TheStore() {
  static Store store;
  return store;
}

std::recursive_mutex& StoreMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

}  // namespace desk
