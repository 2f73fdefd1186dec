// The header that messageIndex points at.
#pragma once

#include "codec/HeaderTable.h"
#include "mail/InstanceState.h"
#include "mail/SharedState.h"

namespace quillon {

// ServerError 532 when no headers are loaded, 533 when the index is that of none. Whether the
// record is good for the mail system that is asked is for its back end to see.
const HeaderRecord& CurrentHeader(const SharedState& shared, const InstanceState& instance);

}  // namespace quillon
