#include "codec/HeldRendering.h"

#include <utility>

namespace quillon {

void HeldRendering::Append(std::string_view bytes) {
  text_ += bytes;
  if (text_.size() > limit_) Keep();
}

void HeldRendering::Keep() {
  if (!std::exchange(isKept_, true)) {
    body_.SeparateFromNext();
    body_.Begin(form_);
  }
  body_.Append(std::exchange(text_, {}));
}

}  // namespace quillon
