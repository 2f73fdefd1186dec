#include "mail/CurrentHeader.h"

#include <cstddef>

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

const HeaderRecord& CurrentHeader(const SharedState& shared, const InstanceState& instance) {
  const auto index = instance.messageIndex;
  if (shared.headers.empty()) throw ServerError(error_code::kNoHeaders);
  if (index < 0 || static_cast<std::size_t>(index) >= shared.headers.size()) {
    throw ServerError(error_code::kBadMessageIndex);
  }
  return shared.headers[static_cast<std::size_t>(index)];
}

}  // namespace quillon
