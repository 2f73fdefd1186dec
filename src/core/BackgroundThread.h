// Work on a thread of its own that nobody waits for.
//
// In place of std::thread::detach: with MinGW's run-time library a thread that ends while it is
// being detached may take the next new thread with it, which then never runs.
#pragma once

#include <functional>

namespace quillon {

// The work may not throw. Throws std::system_error when there is no thread to be had.
void RunInBackground(std::function<void()> work);

}  // namespace quillon
