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

// "quillon.ini" beside the executable, which holds for every user of the machine where no other
// user than administrators can write it; empty where they can.
std::string MachineConfigurationPath(FileSystem& files, const std::string& programDirectory);

}  // namespace quillon
