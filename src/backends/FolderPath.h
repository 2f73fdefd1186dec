// The path of a folder as clients write it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// The names of the folders, from the outermost on; none for a path without any name. A delimiter at
// the start or the end is allowed for. No value for a path with an empty name in it.
//
// With the default delimiter, two backslashes, one backslash parts names as well: the default reads
// as if it were written in a language that doubles them, and other programs show such paths with
// single ones. A name that has a backslash in it takes another delimiter.
std::optional<std::vector<std::string>> SplitFolderPath(std::string_view path,
                                                        std::string_view delimiter);

}  // namespace quillon
