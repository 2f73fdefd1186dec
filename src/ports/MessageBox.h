// Shows one message to the user and waits until it is dismissed. Where there is no user to see it,
// it is not shown.
#pragma once

#include <string>

namespace quillon {

class MessageBoxPort {
 public:
  enum class Icon { None, Warning, Critical };

  virtual ~MessageBoxPort() = default;
  virtual void Show(const std::string& title, const std::string& text, Icon icon) = 0;
};

}  // namespace quillon
