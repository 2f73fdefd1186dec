// Cuts a message into the lines that the splitter wants; a long one into pieces, as it would come
// from a server.
#pragma once

#include <cstddef>
#include <string_view>

#include "codec/MessageSplitter.h"

namespace splitmail {

class LineFeeder {
 public:
  static constexpr std::size_t kPiece = std::size_t{32} << 10;

  explicit LineFeeder(quillon::MessageSplitter& splitter) : splitter_(splitter) {}

  // Takes whole lines, which end in CR LF or LF, off the front of the text. What stays is the start
  // of a line, at most kPiece of it. False when a file could not be written.
  bool Take(std::string_view& text) {
    for (;;) {
      const auto end = text.substr(0, kPiece).find('\n');
      if (end == std::string_view::npos) {
        if (text.size() <= kPiece) return true;
        if (!TakePiece(text)) return false;
        continue;
      }
      const auto size = end > 0 && text[end - 1] == '\r' ? end - 1 : end;
      if (!splitter_.Line(text.substr(0, size), true)) return false;
      text.remove_prefix(end + 1);
    }
  }

  // The message has ended; `rest` is what Take left of it.
  bool End(std::string_view rest) { return rest.empty() || splitter_.Line(rest, true); }

 private:
  // A CR at the end of a piece may belong to the line end.
  bool TakePiece(std::string_view& text) {
    const auto size = text[kPiece - 1] == '\r' ? kPiece - 1 : kPiece;
    if (!splitter_.Line(text.substr(0, size), false)) return false;
    text.remove_prefix(size);
    return true;
  }

  quillon::MessageSplitter& splitter_;
};

}  // namespace splitmail
