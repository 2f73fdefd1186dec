#include "codec/Base64FileEncoder.h"

#include <optional>
#include <span>
#include <utility>

#include "codec/Base64.h"

namespace quillon {

Base64FileEncoder::Base64FileEncoder(FileSystem& files, const std::string& inputPath,
                                     std::string outputPath)
    : files_(files),
      outputPath_(std::move(outputPath)),
      input_(OpenInput(files, inputPath, outputPath_)) {}

FileEncoder::State Base64FileEncoder::Step() {
  if (!input_) return State::Failed;
  if (!output_) {
    output_ = std::make_unique<OutputFile>(files_, outputPath_);
    block_ = BufferFor(*input_, kBase64LineBytes);
  }
  const std::optional<size_t> count = ReadBlock(*input_, block_);
  if (!count) return State::Failed;
  const std::span<const uint8_t> bytes = std::span(block_).first(*count);
  output_->Commit(EncodeBase64Lines(bytes, output_->Reserve(Base64EncodedSize(bytes.size()))));
  if (!output_->Good()) return State::Failed;
  if (bytes.size() == block_.size()) return State::More;
  return output_->Finish() ? State::Done : State::Failed;
}

}  // namespace quillon
