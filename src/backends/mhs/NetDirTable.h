// NETDIR.TAB, the list of users of the whole network. What programs write into it is not published,
// so that every line is taken that can be one of these, in its bytes:
//
//   bob@sales                      an address of SMF, also with an extended part in braces
//   bob@sales (Bob Cook)           the same with the name in a comment, as in a message
//   Bob Cook <bob@sales>
//
// Lines end with CR, LF or both. All others, those that begin with ";" or "#" and those that are
// longer than a message line can be are left out; nothing is read behind the DOS end of file.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "backends/RecipientParts.h"

namespace quillon {

// A line without an end; no value when there is no entry in it.
std::optional<RecipientParts> NetDirEntry(std::string_view line);

// What of a piece of the file has been read.
struct NetDirPiece {
  std::vector<RecipientParts> entries;
  std::size_t bytes = 0;  // up to where the next piece begins; all when a line has no end in it
  bool isCut = false;     // the next piece begins within a line
  bool isEnd = false;     // of the file, as DOS marks it
};

// `isLast`: the file ends behind the piece. `isCut`: it begins within a line, which is left out.
NetDirPiece ReadNetDir(std::string_view piece, bool isLast, bool isCut);

}  // namespace quillon
