// Where the configuration file is.
#pragma once

#include <string>

namespace quillon {

class FileSystem;

// "quillon.ini" beside the executable when it can be written there and by no other user, else below
// the user's application data, in a directory "Quillon" that is made when missing. Directories
// without a trailing separator.
std::string ConfigurationPath(FileSystem& files, const std::string& programDirectory,
                              const std::string& userDirectory);

}  // namespace quillon
