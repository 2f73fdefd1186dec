#pragma once

#include "ports/MessageBox.h"

namespace quillon {

// A modal box in front of everything: the server has no window of its own that could own it.
class Win32MessageBox final : public MessageBoxPort {
 public:
  void Show(const std::string& title, const std::string& text, Icon icon) override;
};

}  // namespace quillon
