#include "olemsg32/CallGate.h"

#include <cstdlib>

#include "olemsg32/Errors.h"
#include "olemsg32/TheStore.h"

namespace desk {

bool EnterCall(const std::string& call, const std::string& arguments) {
  const std::optional<std::string> fault = TheStore().Call(call, arguments);
  if (!fault) return true;
  if (*fault == "nothing") return false;
  char* end = nullptr;
  const unsigned long number = std::strtoul(fault->c_str(), &end, 0);
  if (end == fault->c_str() || *end != '\0') {
    throw std::runtime_error("neither a number nor \"nothing\" in the faults: " + *fault);
  }
  throw MemberError(static_cast<HRESULT>(number));
}

}  // namespace desk
