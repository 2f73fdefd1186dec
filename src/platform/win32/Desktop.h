// Whether somebody can see a window of this process.
#pragma once

namespace quillon {

// False for a service and for everything else that has no visible desktop: a window there would
// wait for ever for a user who cannot see it.
bool HasDesktop();

}  // namespace quillon
