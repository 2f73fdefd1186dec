#include "net/LineSocket.h"

#include <cstring>
#include <span>
#include <utility>

namespace quillon {

namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr int kReadsOfAPoll = 64;

}  // namespace

void LineSocket::Attach(std::unique_ptr<ByteStream> stream) {
  Close();
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(kBufferSize);
  stream_ = std::move(stream);
  stream_->SetHandler(*this);
}

std::size_t LineSocket::Write(std::string_view bytes) {
  if (!stream_) return 0;
  // A failure shows itself to the reading side too, behind the last words of the peer.
  return stream_->Write(bytes).count;
}

void LineSocket::Close() {
  stream_.reset();
  filled_ = 0;
  inPieces_ = false;
  writable_ = false;
  declined_ = false;
}

void LineSocket::ReadDeclined() {
  if (!std::exchange(declined_, false)) return;
  stream_->WantRead(true);
  OnStreamReadable();
}

void LineSocket::OnStreamReadable() {
  if (delivering_) {
    // A connection that was opened from inside a handler: its turn comes when that has returned.
    stream_->WantRead(false);
    declined_ = true;
    return;
  }
  ReadSome();
}

void LineSocket::Poll() {
  for (int reads = 0; stream_ && !delivering_ && reads < kReadsOfAPoll; ++reads) {
    if (!ReadSome()) return;
  }
}

// Whether there was something to read. The stream may be gone then.
bool LineSocket::ReadSome() {
  const auto result = stream_->Read(std::span(buffer_.get() + filled_, kBufferSize - filled_));
  switch (result.status) {
    case IoResult::Status::Ok: {
      const auto scanFrom = filled_;
      filled_ += result.count;
      Deliver(scanFrom);
      return true;
    }
    case IoResult::Status::WouldBlock:
      return false;
    case IoResult::Status::Closed:
      DeliverEnd(0);
      return true;
    case IoResult::Status::Failed:
      DeliverEnd(result.error);
      return true;
  }
  return false;
}

void LineSocket::OnStreamWritable() {
  if (delivering_) {
    writable_ = true;
    return;
  }
  handler_.OnSendReady();
}

// Hands the complete lines of the buffer on and keeps the rest. The handler may close the
// connection, and even open another one, which ends the delivery.
void LineSocket::Deliver(std::size_t scanFrom) {
  const auto* const stream = stream_.get();
  delivering_ = true;
  stream_->WantRead(false);
  std::size_t start = 0;
  while (stream_.get() == stream) {
    const auto* const end =
        static_cast<const char*>(std::memchr(buffer_.get() + scanFrom, '\n', filled_ - scanFrom));
    if (end == nullptr) break;
    std::string_view line(buffer_.get() + start,
                          static_cast<std::size_t>(end - buffer_.get()) - start);
    start = scanFrom = start + line.size() + 1;
    if (line.ends_with('\r')) line.remove_suffix(1);
    inPieces_ = false;
    handler_.OnLine(line, true);
  }
  delivering_ = false;
  if (stream_.get() != stream) return ReadDeclined();
  filled_ -= start;
  std::memmove(buffer_.get(), buffer_.get() + start, filled_);
  if (filled_ == kBufferSize) {
    // The last byte stays: it may be the CR of the line's end.
    delivering_ = inPieces_ = true;
    handler_.OnLine({buffer_.get(), kBufferSize - 1}, false);
    delivering_ = false;
    if (stream_.get() != stream) return ReadDeclined();
    buffer_[0] = buffer_[kBufferSize - 1];
    filled_ = 1;
  }
  handler_.OnLinesRead();
  stream_->WantRead(true);
  if (std::exchange(writable_, false)) handler_.OnSendReady();
}

void LineSocket::DeliverEnd(int error) {
  const auto* const stream = stream_.get();
  if (filled_ > 0 || inPieces_) {
    const std::string last(buffer_.get(), filled_);
    delivering_ = true;
    handler_.OnUnfinishedLine(last);
    delivering_ = false;
    if (stream_.get() != stream) return ReadDeclined();
  }
  Close();
  handler_.OnClosed(error);
}

}  // namespace quillon
