// The failure of one step of an operation: its number, and what the box says of the step.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace quillon {

class MhsFailure : public std::runtime_error {
 public:
  MhsFailure(const std::string& context, std::int32_t number)
      : std::runtime_error(context), number_(number) {}

  std::int32_t Number() const noexcept { return number_; }

 private:
  std::int32_t number_;
};

}  // namespace quillon
