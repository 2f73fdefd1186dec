// The console of the shell that has started the program, or its redirected input and output;
// without either, a box.
#pragma once

#include <optional>
#include <string>

#include "administration/Console.h"

namespace quillon {

class AdministratorConsole final : public Console {
 public:
  void WriteLine(const std::string& text) override;
  void Show() override;
  // Shows what has been written before. There is no box for it: without a console and without
  // redirected input there is nobody to ask.
  std::optional<std::string> ReadSecret(const std::string& question) override;

 private:
  std::string waiting_;
};

}  // namespace quillon
