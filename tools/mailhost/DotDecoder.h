// Takes the dots off the text that follows DATA, and finds its end (RFC 5321 4.5.2).
//
// Only CR LF ends a line: a bare LF or CR is content, and so is a "." after it. State survives
// between buffers, so the text may arrive cut anywhere.
#pragma once

#include <cstddef>
#include <string_view>

namespace mailhost {

class DotDecoder {
 public:
  // Calls emit(std::string_view) with the content in `bytes`, in one or more runs, and returns how
  // many of them it took: all, or those up to and including the line "." that ends the text.
  template <typename Emit>
  std::size_t Feed(std::string_view bytes, Emit&& emit) {
    std::size_t used = 0;
    while (used < bytes.size() && !Done()) {
      const std::string_view run = Next(bytes, used);
      if (!run.empty()) emit(run);
    }
    return used;
  }

  bool Done() const { return state_ == State::kDone; }

 private:
  enum class State { kLineStart, kText, kCr, kDot, kDotCr, kDone };

  // Advances `used` to the next dot that is no content, and returns the content before it.
  std::string_view Next(std::string_view bytes, std::size_t& used);
  // What the byte after a dot at the start of a line makes of that dot.
  std::string_view AfterDot(char c, std::size_t& used);

  State state_ = State::kLineStart;
};

}  // namespace mailhost
