// The window in which the user selects a mail system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillon {

struct MailSystemChoice {
  std::string name;
  std::string reason;  // why it cannot be selected; empty when it can
};

class MailSystemDialog {
 public:
  enum class Answer {
    Selected,
    Cancelled,
    Unavailable,  // there is no user, or no desktop to show it on
  };

  virtual ~MailSystemDialog() = default;

  // `selected` is the place in the list that is marked first, and then the one the user has taken.
  // `owner` is a window of the client, 0 for none.
  virtual Answer Show(const std::string& caption, std::int32_t owner,
                      const std::vector<MailSystemChoice>& choices,
                      std::optional<std::size_t>& selected) = 0;
};

// For a program without windows.
class NoMailSystemDialog final : public MailSystemDialog {
 public:
  Answer Show(const std::string&, std::int32_t, const std::vector<MailSystemChoice>&,
              std::optional<std::size_t>&) override {
    return Answer::Unavailable;
  }
};

}  // namespace quillon
