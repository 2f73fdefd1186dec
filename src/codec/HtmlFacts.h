// What HTML tells of itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// The content ids of the parts that it shows (RFC 2392: "cid:logo"), each once, in the order of
// their first appearance.
std::vector<std::string> ContentIdsIn(std::string_view html);

// The character set that one of its first tags names; empty when none does. The bytes are in a set
// that ASCII is part of, so that UTF-16 is never meant.
std::string CharacterSetOfHtml(std::string_view bytes);

}  // namespace quillon
