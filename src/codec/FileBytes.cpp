#include "codec/FileBytes.h"

#include "codec/BlockIo.h"

namespace quillon {

void FileBlocks::Load(std::uint64_t position) {
  start_ = position;
  used_ = file_.Seek(position) ? ReadBlock(file_, buffer_).value_or(0) : 0;
}

// Nothing at the end, and when reading fails.
std::string_view FileBytes::Next(std::uint64_t most) {
  most = std::min(most, Left());
  if (most == 0) return {};
  auto bytes = file_->From(at_);
  if (bytes.size() > most) bytes = bytes.substr(0, static_cast<std::size_t>(most));
  at_ += bytes.size();
  if (bytes.empty()) {
    failed_ = true;
    at_ = end_;
  }
  return bytes;
}

std::uint8_t FileBytes::Byte() {
  const auto byte = Next(1);
  if (byte.empty()) failed_ = true;
  return byte.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(byte[0]);
}

std::uint16_t FileBytes::Number16() {
  const unsigned low = Byte();
  const unsigned high = Byte();
  return failed_ ? std::uint16_t{0} : static_cast<std::uint16_t>(high << 8U | low);
}

std::uint32_t FileBytes::Number32() {
  const std::uint32_t low = Number16();
  const std::uint32_t high = Number16();
  return failed_ ? 0 : high << 16U | low;
}

FileBytes FileBytes::Take(std::uint64_t size) {
  if (size > Left()) failed_ = true;
  auto part = *this;
  at_ += std::min(size, Left());
  part.end_ = at_;
  return part;
}

std::string FileBytes::Text(std::size_t most) {
  std::string text;
  while (text.size() < most) {
    const auto bytes = Next(most - text.size());
    if (bytes.empty()) break;
    text += bytes;
  }
  return text;
}

void FileBytes::CopyTo(ByteSink& sink) {
  for (auto bytes = Next(Left()); !bytes.empty(); bytes = Next(Left())) sink.Append(bytes);
}

}  // namespace quillon
