// The identifiers of the type library, defined once: initguid.h makes the header do it.
// clang-format off
#include <initguid.h>
#include "quillon_h.h"
// clang-format on
