// What the user wrote, on the command line or in a file, cannot be carried out.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace mailhost {

// The text says where and why, in one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  UsageError(const std::string& file, std::size_t line, const std::string& why)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + why) {}
};

}  // namespace mailhost
