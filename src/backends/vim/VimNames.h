// Names that are looked up in the address books.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ports/Vim.h"

namespace quillon {

// The names of the address books, in VIM's order. Throws VimFailure.
std::vector<std::string> VimBookNames(Vim& library, vim::Handle session);

// The first entry with that name in any of the books, or else the first that begins so, the books
// taken in VIM's order; no value when there is none. Throws VimFailure, with the status of a name
// that stands for several too.
std::optional<VimEntry> FindVimName(Vim& library, vim::Handle session, const std::string& name);

}  // namespace quillon
