#include "codec/HeldHtml.h"

#include <utility>

#include "codec/HtmlFacts.h"

namespace quillon {

void HeldHtml::Append(std::string_view bytes) {
  if (onward_ != nullptr && !waits_) onward_->Append(bytes);
  if (isTooLong_) return;
  bytes_ += bytes;
  isTooLong_ = bytes_.size() > limit_;
  if (!isTooLong_) return;
  const auto held = std::exchange(bytes_, {});
  if (std::exchange(waits_, false) && onward_ != nullptr) onward_->Append(held);
}

std::string HeldHtml::Take(const TextReader& reader) {
  const auto bytes = std::exchange(bytes_, {});
  const auto& named = form_.characterSet;
  return reader.Whole(bytes, named.empty() ? CharacterSetOfHtml(bytes) : named);
}

}  // namespace quillon
