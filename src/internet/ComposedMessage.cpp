#include "internet/ComposedMessage.h"

#include <algorithm>
#include <utility>

#include "internet/BodyText.h"
#include "internet/EncodedFile.h"

namespace quillon {

ComposedMessage::ComposedMessage(FileSystem& files, std::size_t blockSize,
                                 std::unique_ptr<TemporaryFolder> folder)
    : files_(files), blockSize_(blockSize), folder_(std::move(folder)) {}

void ComposedMessage::Add(MessagePiece piece) {
  size_ += piece.lines.size() + piece.text.size();
  if (!piece.path.empty()) {
    const auto file = files_.Open(piece.path, OpenMode::kRead);
    if (file != nullptr) size_ += file->Size().value_or(0);
  }
  pieces_.push_back(std::move(piece));
}

DataSource::State ComposedMessage::Fill(std::string& block, std::size_t wanted) {
  const auto end = block.size() + wanted;
  const auto section = Current();
  for (;;) {
    const auto state = FillPiece(block, end - block.size());
    if (state == State::Failed) return state;
    if (state == State::End) {
      content_.reset();
      begun_ = false;
      if (at_ + 1 == pieces_.size()) return State::End;
      ++at_;
    } else if (IsLimited()) {
      return state;
    }
    if (block.size() >= end || Current() != section) return State::More;
  }
}

DataSource::State ComposedMessage::FillPiece(std::string& block, std::size_t wanted) {
  const auto& piece = pieces_[at_];
  if (!std::exchange(begun_, true)) {
    block += piece.lines;
    if (piece.content == MessagePiece::Content::None) return State::End;
    content_ = Open(piece);
    if (IsLimited()) return State::More;
  }
  return content_->Fill(block, IsLimited() ? std::min(wanted, blockSize_) : wanted);
}

void ComposedMessage::Rewind() {
  at_ = 0;
  begun_ = false;
  content_.reset();
}

bool ComposedMessage::IsEightBit() const {
  const auto eightBit = [](const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return (static_cast<unsigned char>(c) & 0x80U) != 0; });
  };
  return std::any_of(pieces_.begin(), pieces_.end(), [&](const auto& piece) {
    return eightBit(piece.lines) || eightBit(piece.text);
  });
}

std::unique_ptr<DataSource> ComposedMessage::Open(const MessagePiece& piece) const {
  using Content = MessagePiece::Content;
  if (piece.content == Content::Text) return std::make_unique<BodyText>(piece.text);
  return std::make_unique<EncodedFile>(files_, piece.path, piece.content == Content::UuFile);
}

bool ComposedMessage::IsLimited() const {
  return blockSize_ > 0 && pieces_[at_].section == Section::Text;
}

}  // namespace quillon
