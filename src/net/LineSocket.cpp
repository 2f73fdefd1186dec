#include "net/LineSocket.h"

#include <cstring>
#include <span>
#include <utility>

namespace quillon {

namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr int kReadsOfAPoll = 64;

// More than a full buffer has of ordinary lines, so that only short ones are handed on in turns.
constexpr int kLinesPerTurn = 2000;

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

std::unique_ptr<ByteStream> LineSocket::Detach() {
  auto stream = start_ < filled_ ? nullptr : std::move(stream_);
  Close();
  return stream;
}

void LineSocket::Close() {
  stream_.reset();
  ++connection_;
  nextTurn_.Stop();
  filled_ = start_ = scanned_ = 0;
  linesLeft_ = 0;
  end_.reset();
  inPieces_ = false;
  linesRead_ = false;
  atCrLf_ = true;
  crLfSeen_ = false;
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

// Whether there was something to deliver. The stream may be gone then.
bool LineSocket::ReadSome() {
  if (nextTurn_.Running()) {
    nextTurn_.Stop();
    OnTurn();
    return true;
  }
  const auto result = stream_->Read(std::span(buffer_.get() + filled_, kBufferSize - filled_));
  switch (result.status) {
    case IoResult::Status::Ok:
      filled_ += result.count;
      bytesRead_ += result.count;
      linesRead_ = true;
      stream_->WantRead(false);
      Deliver();
      return true;
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

// Runs an event of the handler, which may close the connection, and even open another one: then
// false, and the delivery ends. What it throws passes, and the delivery goes on in the next turn.
template <typename Event>
bool LineSocket::Tell(const Event& event) {
  const auto connection = connection_;
  delivering_ = true;
  try {
    event();
  } catch (...) {
    delivering_ = false;
    linesLeft_ = 0;
    if (stream_) nextTurn_.Start(0);
    throw;
  }
  delivering_ = false;
  if (connection_ == connection) return true;
  ReadDeclined();
  return false;
}

void LineSocket::OnTurn() {
  if (declined_) return ReadDeclined();
  if (end_) return DeliverEnd(*end_);
  Deliver();
}

bool LineSocket::TakeLine(std::string_view& line) {
  if (linesLeft_ == 0) return false;
  const auto* const end =
      static_cast<const char*>(std::memchr(buffer_.get() + scanned_, '\n', filled_ - scanned_));
  if (end == nullptr) return false;
  --linesLeft_;
  auto length = static_cast<std::size_t>(end - buffer_.get()) - start_;
  const char* const start = buffer_.get() + std::exchange(start_, start_ + length + 1);
  scanned_ = start_;
  afterCrLf_ = atCrLf_;
  atCrLf_ = length > 0 && start[length - 1] == '\r';
  crLfSeen_ |= atCrLf_;
  if (atCrLf_) --length;
  line = {start, length};
  inPieces_ = false;
  return true;
}

// Hands the complete lines of the buffer on and keeps the rest.
void LineSocket::Deliver() {
  linesLeft_ = kLinesPerTurn;
  for (std::string_view line; TakeLine(line);) {
    if (!Tell([&] { handler_.OnLine(line, true); })) return;
  }
  if (std::exchange(linesLeft_, 0) == 0) return nextTurn_.Start(0);
  if (start_ == 0 && filled_ == kBufferSize && !DeliverPiece()) return;
  Compact();
  if (std::exchange(linesRead_, false) && !Tell([this] { handler_.OnLinesRead(); })) return;
  stream_->WantRead(true);
  if (std::exchange(writable_, false)) handler_.OnSendReady();
}

bool LineSocket::DeliverPiece() {
  // The last byte stays: it may be the CR of the line's end.
  start_ = kBufferSize - 1;
  inPieces_ = true;
  return Tell([this] { handler_.OnLine({buffer_.get(), kBufferSize - 1}, false); });
}

void LineSocket::Compact() {
  filled_ -= start_;
  std::memmove(buffer_.get(), buffer_.get() + start_, filled_);
  start_ = 0;
  scanned_ = filled_;
}

void LineSocket::DeliverEnd(int error) {
  end_ = error;
  if (filled_ > 0 || inPieces_) {
    const std::string last(buffer_.get(), std::exchange(filled_, 0));
    inPieces_ = false;
    if (!Tell([&] { handler_.OnUnfinishedLine(last); })) return;
  }
  Close();
  handler_.OnClosed(error);
}

}  // namespace quillon
