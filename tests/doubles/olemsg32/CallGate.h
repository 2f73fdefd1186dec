// What every call passes: it is written to the store's log, and fails when the store's faults say
// so.
#pragma once

#include <string>

namespace desk {

// Throws MemberError for a fault with a number; false when the call is to give nothing.
bool EnterCall(const std::string& call, const std::string& arguments);

}  // namespace desk
