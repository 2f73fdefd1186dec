#include "MessageReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>

namespace mailhost {

namespace {

// Most headers end within the first read, so that TOP costs one.
constexpr std::size_t kFirstRead = 16 * 1024;
constexpr std::size_t kRead = 64 * 1024;

std::string_view ReadChunk(int file, char* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = read(file, buffer, size);
    if (count >= 0) return {buffer, static_cast<std::size_t>(count)};
    if (errno != EINTR) return {};
  }
}

bool EndsInCrLf(int file, std::uint64_t size) {
  char end[2] = {};
  return size >= 2 && pread(file, end, 2, static_cast<off_t>(size - 2)) == 2 && end[0] == '\r' &&
         end[1] == '\n';
}

}  // namespace

bool MessageReader::Read(std::string& out) {
  std::array<char, kRead> buffer;
  const std::size_t size = std::exchange(chunk_, kRead) == 0 ? kFirstRead : kRead;
  const std::string_view bytes = ReadChunk(file_.Get(), buffer.data(), size);
  if (bytes.empty()) {
    if (lineLength_ != 0) out += "\r\n";
    return false;
  }
  return Encode(bytes, out);
}

bool MessageReader::Encode(std::string_view bytes, std::string& out) {
  while (!bytes.empty()) {
    if (lineLength_ == 0 && bytes.front() == '.') out += '.';
    const std::size_t lf = bytes.find('\n');
    const std::string_view text = bytes.substr(0, lf);
    const bool cr = text.empty() ? afterCr_ : text.back() == '\r';
    out += text;
    if (lf == std::string_view::npos) {
      lineLength_ += text.size();
      afterCr_ = cr;
      return true;
    }
    bytes.remove_prefix(lf + 1);
    if (lineEnds_ == LineEnds::kUnknown) lineEnds_ = cr ? LineEnds::kCrLf : LineEnds::kLf;
    lineLength_ += text.size();
    if (cr || lineEnds_ == LineEnds::kLf) {
      out += cr ? "\n" : "\r\n";
      const std::size_t length = lineLength_ - (cr ? 1 : 0);
      lineLength_ = 0;
      afterCr_ = false;
      if (!CountLine(length)) return false;
    } else {
      out += '\n';
      ++lineLength_;
      afterCr_ = false;
    }
  }
  return true;
}

bool MessageReader::CountLine(std::size_t length) {
  if (linesLeft_ == kAllLines) return true;
  if (inBody_) return --linesLeft_ != 0;
  inBody_ = length == 0;
  return !inBody_ || linesLeft_ != 0;
}

std::uint64_t MessageReader::WireSize(int file, std::uint64_t fileSize) {
  std::array<char, kRead> buffer;
  std::uint64_t bareLineFeeds = 0;
  bool afterCr = false;
  bool first = true;
  for (;;) {
    const std::string_view bytes = ReadChunk(file, buffer.data(), buffer.size());
    if (bytes.empty()) break;
    for (std::size_t lf = bytes.find('\n'); lf != std::string_view::npos;
         lf = bytes.find('\n', lf + 1)) {
      const bool cr = lf == 0 ? afterCr : bytes[lf - 1] == '\r';
      if (first && cr) return fileSize + (EndsInCrLf(file, fileSize) ? 0 : 2);
      first = false;
      if (!cr) ++bareLineFeeds;
    }
    afterCr = bytes.back() == '\r';
  }
  char last = '\n';
  if (fileSize == 0 || pread(file, &last, 1, static_cast<off_t>(fileSize - 1)) != 1) last = '\n';
  return fileSize + bareLineFeeds + (last == '\n' ? 0 : 2);
}

}  // namespace mailhost
