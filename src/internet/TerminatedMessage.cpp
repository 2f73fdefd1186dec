#include "internet/TerminatedMessage.h"

#include <utility>

#include "internet/InternetError.h"

namespace quillon {

TerminatedMessage::TerminatedMessage(MessageData& message, std::function<void(Phase)> entered,
                                     std::function<void(std::uint64_t)> progress)
    : message_(message), entered_(std::move(entered)), progress_(std::move(progress)) {}

std::int32_t TerminatedMessage::FailureNumber() const noexcept {
  switch (phase_) {
    case Phase::Text:
    case Phase::Alternatives:
      return internet_error::kTextFailed;
    case Phase::Attachments:
      return internet_error::kAttachmentsFailed;
    case Phase::Terminator:
      break;
  }
  return internet_error::kTerminatorFailed;
}

DataSource::State TerminatedMessage::Fill(std::string& block, std::size_t wanted) {
  const auto start = block.size();
  const auto end = start + wanted;
  for (;;) {
    const auto section = message_.Current();
    // Text behind an alternative or a file is a part of it.
    if (section == MessageData::Section::Alternatives && phase_ == Phase::Text) {
      Enter(Phase::Alternatives);
    } else if (section == MessageData::Section::Attachments) {
      Enter(Phase::Attachments);
    }
    const auto state = message_.Fill(block, end - block.size());
    if (state == State::Failed) return state;
    const bool full = block.size() >= end || message_.Current() == section;
    if (state == State::End || full) {
      bytes_ += block.size() - start;
      progress_(bytes_);
    }
    if (state == State::End) break;
    if (full) return state;
  }
  Enter(Phase::Terminator);
  block += "\r\n.\r\n";
  return State::End;
}

void TerminatedMessage::Enter(Phase phase) {
  if (std::exchange(phase_, phase) != phase) entered_(phase);
}

}  // namespace quillon
