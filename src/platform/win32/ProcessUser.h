// The account that the process runs as.
#pragma once

#include <windows.h>
#include <cstddef>
#include <vector>

namespace quillon {

class ProcessUser {
 public:
  ProcessUser();

  // Null when the system does not tell.
  PSID Sid() const noexcept;

 private:
  std::vector<std::max_align_t> token_;  // a TOKEN_USER and what it refers to
};

}  // namespace quillon
