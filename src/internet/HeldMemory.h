// What is kept of the mail in memory, as it will be once its bytes have become text: what a server
// may have the process keep is limited by that, not by the bytes that came.
#pragma once

#include <cstddef>
#include <string_view>

#include "codec/HeaderTable.h"

namespace quillon {

// A byte beyond ASCII becomes a character of up to three bytes.
std::size_t HeldMemory(std::string_view bytes);

// All texts of a record; and the record, with its place in an index.
std::size_t HeldMemory(const HeaderRecord& record);

}  // namespace quillon
