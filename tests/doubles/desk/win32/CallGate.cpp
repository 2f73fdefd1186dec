#include "desk/win32/CallGate.h"

#include <cstdlib>

#include "desk/win32/TheStore.h"
#include "desk/win32/Trouble.h"

namespace desk {

bool EnterCall(const std::string& call, const std::string& arguments, FailWith failWith) {
  std::optional<std::string> fault;
  {
    // Not for longer: trouble may let other calls in.
    const std::scoped_lock oneAtATime(StoreMutex());
    fault = TheStore().Call(call, arguments);
  }
  if (!fault) return true;
  if (*fault == "nothing") return false;
  char* end = nullptr;
  const unsigned long number = std::strtoul(fault->c_str(), &end, 0);
  const bool isNumber = end != fault->c_str() && *end == '\0';
  if (isNumber) failWith(number);
  MakeTrouble(*fault);
  return true;
}

}  // namespace desk
