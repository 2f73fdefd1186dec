// The mail systems from which a user selects one.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "mail/MailSystemId.h"
#include "ports/MailSystemDialog.h"

namespace quillon {

class MailSystemList {
 public:
  // Those that are present come first, the others after them with the reason.
  explicit MailSystemList(const std::function<bool(MailSystemId)>& isPresent);

  const std::vector<MailSystemChoice>& Choices() const noexcept { return choices_; }

  // The line that stands for the system or for its family; without one the first line.
  std::size_t PlaceOf(MailSystemId system) const;

  // What taking a line makes of the current system: an identifier of the same family stays.
  MailSystemId Taken(std::size_t place, MailSystemId current) const;

 private:
  std::vector<MailSystemId> systems_;
  std::vector<MailSystemChoice> choices_;
};

}  // namespace quillon
