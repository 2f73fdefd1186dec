#include "olemsg32/TheStore.h"

namespace desk {

Store& TheStore() {
  static Store store;
  return store;
}

}  // namespace desk
