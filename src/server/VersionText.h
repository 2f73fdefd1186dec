// The version as clients see it.
#pragma once

#include <string>

namespace quillon {

// Major and minor version as one number with two decimals at most: 3 and 5 give "3.05", 4 and 0
// give "4.0".
std::string VersionText(int major, int minor);

}  // namespace quillon
