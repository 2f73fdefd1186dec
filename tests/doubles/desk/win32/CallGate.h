// What every call passes: it is written to the store's log as "Class.Member", or "Class.Member="
// when a property is put, and the store's faults of that name decide what becomes of it. Their
// words:
//
//   0x80040607   the number that the call fails with; any other number too
//   nothing      the call gives no object, and does nothing
//
// and those of desk/win32/Trouble.h, after which it goes on.
#pragma once

#include <string>

namespace desk {

// Throws what a number of the fault file is to the client.
using FailWith = void (*)(unsigned long number);

// False when the call is to give nothing.
bool EnterCall(const std::string& call, const std::string& arguments, FailWith failWith);

}  // namespace desk
