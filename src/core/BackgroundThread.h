// Work on a thread of its own that nobody waits for.
//
// In place of std::thread::detach: with MinGW's run-time library (as seen in Wine) a new thread may
// never run when the one before it ended while it was being detached.
#pragma once

#include <functional>

namespace quillon {

// The work may not throw. Throws std::system_error when there is no thread to be had.
void RunInBackground(std::function<void()> work);

// Waits until all of them have ended, for a test that looks at what they leave behind: a process
// that ends under them would leave their memory.
void JoinBackgroundThreads();

}  // namespace quillon
