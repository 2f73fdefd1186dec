// The failure of one step of an operation: what is said of the step, and VIM's whole status. A step
// without a text of its own is told by its status alone.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "ports/Vim.h"

namespace quillon {

class VimFailure : public std::runtime_error {
 public:
  VimFailure(const std::string& step, vim::Status status)
      : std::runtime_error(step), status_(status) {}

  // The number that is reported. A status that would read as success there becomes one that is out
  // of range.
  std::int32_t Number() const noexcept {
    const auto number = static_cast<std::int32_t>(status_);
    return number == -1 ? INT32_MIN : number;
  }

 private:
  vim::Status status_;
};

// Throws VimFailure for any status but success.
inline void CheckVim(vim::Status status, const std::string& step = {}) {
  if (status != vim::kSuccess) throw VimFailure(step, status);
}

}  // namespace quillon
