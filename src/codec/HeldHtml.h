// The HTML of a part, on its way to where it is written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "codec/ByteSink.h"
#include "codec/TextForm.h"
#include "codec/TextReader.h"

namespace quillon {

class HeldHtml final : public ByteSink {
 public:
  // What is longer than `limit` is not held. `onward`, if any, gets it all; with `waits` only when
  // it turns out to be too long.
  HeldHtml(TextForm form, std::size_t limit, ByteSink* onward, bool waits)
      : form_(std::move(form)), limit_(limit), onward_(onward), waits_(waits) {}

  void Append(std::string_view bytes) override;

  bool IsTooLong() const noexcept { return isTooLong_; }

  // The text, by the character set that the part names, else the HTML itself; empty when it was too
  // long.
  std::string Take(const TextReader& reader);

 private:
  const TextForm form_;
  const std::size_t limit_;
  ByteSink* const onward_;
  bool waits_;
  std::string bytes_;
  bool isTooLong_ = false;
};

}  // namespace quillon
