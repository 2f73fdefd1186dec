// The text of a message on its way out: every line end leaves as CR LF, and no line can be taken
// for the terminator.
//
// A line that is a single "." leaves as ". "; when it is the first of several, as " .". Any other
// line that begins with
// "." leaves with the dot doubled (RFC 5321, 4.5.2), so that it arrives unchanged.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "net/SocketWriter.h"

namespace quillon {

class BodyText final : public DataSource {
 public:
  // The text must live as long as this.
  explicit BodyText(std::string_view text);

  State Fill(std::string& block, std::size_t wanted) override;

 private:
  std::string_view rest_;
  bool atLineStart_ = true;
  bool blankFirst_;  // the text begins with "." and a line break
};

}  // namespace quillon
