#include "olemsg32/CallGate.h"

#include <cstdlib>

#include "desk/win32/Trouble.h"
#include "olemsg32/Errors.h"
#include "olemsg32/TheStore.h"

namespace desk {

bool EnterCall(const std::string& call, const std::string& arguments) {
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
  if (isNumber) throw MemberError(static_cast<HRESULT>(number));
  MakeTrouble(*fault);
  return true;
}

}  // namespace desk
