// Where an administrator's command says what it does, and asks for what nobody else may see.
#pragma once

#include <optional>
#include <string>

namespace quillon {

class Console {
 public:
  virtual ~Console() = default;

  // UTF-8, without a line end. Where there is no output, lines are collected for one box.
  virtual void WriteLine(const std::string& text) = 0;

  // What has been written has to be seen before the command goes on.
  virtual void Show() = 0;

  // From redirected input, or typed without being shown; none when that is given up, or when there
  // is nobody to ask.
  virtual std::optional<std::string> ReadSecret(const std::string& question) = 0;
};

}  // namespace quillon
