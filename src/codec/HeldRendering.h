// A rendering of an alternative group that becomes text of the message, unless a plain one follows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "codec/BodyCollector.h"
#include "codec/ByteSink.h"
#include "codec/TextForm.h"

namespace quillon {

class HeldRendering final : public ByteSink {
 public:
  // What is longer than `limit` is not held: it is text whatever follows.
  HeldRendering(BodyCollector& body, std::size_t limit, TextForm form)
      : body_(body), limit_(limit), form_(std::move(form)) {}

  void Append(std::string_view bytes) override;

  // Before anything is appended: what comes is of that form.
  void Begin(TextForm form) { form_ = std::move(form); }

  // No plain rendering has come.
  void Keep();

  // Whether a piece of it is text already.
  bool IsKept() const noexcept { return isKept_; }

 private:
  BodyCollector& body_;
  const std::size_t limit_;
  TextForm form_;
  std::string text_;
  bool isKept_ = false;
};

}  // namespace quillon
