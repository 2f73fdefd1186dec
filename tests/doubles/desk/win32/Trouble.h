// What a word of the fault file does to a call, apart from the numbers it may fail with:
//
//   crash      an access violation
//   raise      an exception of the system, which is no C++ one
//   pump 500   500 milliseconds in which the thread's messages are served, as under a window
//   stop 500   500 milliseconds in which nothing is
//
// The call goes on afterwards, if it lives.
#pragma once

#include <string_view>

namespace desk {

// Throws StoreError for a word that is none of these.
void MakeTrouble(std::string_view word);

}  // namespace desk
