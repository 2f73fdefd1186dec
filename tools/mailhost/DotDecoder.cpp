#include "DotDecoder.h"

namespace mailhost {

std::string_view DotDecoder::Next(std::string_view bytes, std::size_t& used) {
  if (state_ == State::kDot || state_ == State::kDotCr) return AfterDot(bytes[used], used);
  const std::size_t start = used;
  while (used < bytes.size()) {
    const char c = bytes[used];
    if (state_ == State::kLineStart && c == '.') {
      state_ = State::kDot;
      return bytes.substr(start, used++ - start);
    }
    if (state_ == State::kCr && c == '\n') {
      state_ = State::kLineStart;
      ++used;
      continue;
    }
    const std::size_t cr = bytes.find('\r', used);
    state_ = cr == std::string_view::npos ? State::kText : State::kCr;
    used = cr == std::string_view::npos ? bytes.size() : cr + 1;
  }
  return bytes.substr(start);
}

std::string_view DotDecoder::AfterDot(char c, std::size_t& used) {
  if (state_ == State::kDot) {
    state_ = c == '\r' ? State::kDotCr : State::kText;
    if (c == '\r') ++used;
    return {};
  }
  if (c == '\n') {
    state_ = State::kDone;
    ++used;
    return {};
  }
  // The dot stood before a bare CR, which is content.
  state_ = State::kText;
  return "\r";
}

}  // namespace mailhost
