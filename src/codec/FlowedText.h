// Text of the form "flowed" (RFC 3676): paragraphs that were broken into lines for the way.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// The lines of each paragraph as one. Quoted paragraphs keep their marks, once in front. Lines end
// in LF or CR LF, and keep the end that they have; `deletesBlanks` takes the blank away at which a
// line was broken, as languages without blanks want it.
std::string JoinFlowedText(std::string_view text, bool deletesBlanks);

}  // namespace quillon
