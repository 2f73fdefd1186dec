#include "codec/UuFileEncoder.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include "codec/UuLines.h"

namespace quillon {

UuDataEncoder::UuDataEncoder(File& input, uint64_t bytes, OutputFile& output)
    : input_(input), left_(bytes), output_(output), block_(BufferFor(input, kUuBlockBytes)) {}

FileEncoder::State UuDataEncoder::Step() {
  const auto wanted = static_cast<size_t>(std::min<uint64_t>(left_, block_.size()));
  const std::optional<size_t> count = ReadBlock(input_, std::span(block_).first(wanted));
  if (!count) return State::Failed;
  const std::span<const uint8_t> bytes = std::span(block_).first(*count);
  output_.Commit(EncodeUuLines(bytes, output_.Reserve(UuEncodedSize(bytes.size()))));
  if (!output_.Good()) return State::Failed;
  left_ -= wanted;
  return bytes.size() < wanted || left_ == 0 ? State::Done : State::More;
}

UuFileEncoder::UuFileEncoder(FileSystem& files, const std::string& inputPath,
                             std::string outputPath, std::string beginLine,
                             std::string_view trailer)
    : files_(files),
      outputPath_(std::move(outputPath)),
      beginLine_(std::move(beginLine)),
      trailer_(trailer),
      input_(OpenInput(files, inputPath, outputPath_)) {}

FileEncoder::State UuFileEncoder::Step() {
  if (!input_) return State::Failed;
  if (!data_) {
    output_ = std::make_unique<OutputFile>(files_, outputPath_);
    output_->Append(beginLine_);
    data_ = std::make_unique<UuDataEncoder>(*input_, kWholeFile, *output_);
  }
  const State state = data_->Step();
  if (state != State::Done) return state;
  output_->Append(trailer_);
  return output_->Finish() ? State::Done : State::Failed;
}

}  // namespace quillon
