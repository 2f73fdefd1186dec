#include "backends/mhs/MhsMailSystem.h"

#include "backends/mhs/MhsErrorText.h"

namespace quillon {

std::string MhsMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return MhsErrorText(number);
}

}  // namespace quillon
