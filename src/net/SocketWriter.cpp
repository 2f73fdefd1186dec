#include "net/SocketWriter.h"

#include <utility>

#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::size_t kBlockSize = 64 * 1024;

// What a fast connection is given at once, because each write wakes the other side. It has to have
// shown its speed with more than the buffers on the way hold: a large block that waits in front of
// a slow connection would outlast the time-out.
constexpr std::size_t kLargeBlockSize = 1024 * 1024;
constexpr std::uint64_t kFastFrom = 8 * 1024 * 1024;
constexpr std::uint64_t kFastBytesPerMillisecond = 32 * 1024;

// How much goes out before the loop gets a turn, so that a fast connection cannot keep it from
// everything else.
constexpr std::uint64_t kBytesPerTurn = 2 * 1024 * 1024;

}  // namespace

SocketWriter::SocketWriter(EventLoop& loop, LineSocket& socket, std::function<void()> stuck)
    : loop_(loop),
      socket_(socket),
      stuckTimer_(loop, std::move(stuck)),
      turn_(std::make_shared<int>(0)) {}

SocketWriter::~SocketWriter() {
  ++*turn_;
}

bool SocketWriter::WriteCommand(std::string_view line) {
  if (!IsWireSafe(line)) return false;
  block_.append(line).append("\r\n");
  OnSendReady();
  return true;
}

bool SocketWriter::WriteCommands(const std::vector<std::string>& lines) {
  for (const auto& line : lines) {
    if (!IsWireSafe(line)) return false;
  }
  for (const auto& line : lines) block_.append(line).append("\r\n");
  OnSendReady();
  return true;
}

void SocketWriter::SocketSendData(DataSource& source, std::function<void(bool)> written) {
  source_ = &source;
  written_ = std::move(written);
  startedAt_ = loop_.Now();
  startBytes_ = bytesSent_;
  Pump();
}

void SocketWriter::Break() {
  stuckTimer_.Stop();
  block_.clear();
  sent_ = 0;
  source_ = nullptr;
  written_ = nullptr;
  ++*turn_;
}

void SocketWriter::OnSendReady() {
  if (written_) return Pump();
  Flush();
}

void SocketWriter::Pump() {
  const auto turnEnd = bytesSent_ + kBytesPerTurn;
  while (Flush()) {
    if (source_ == nullptr) {
      if (const auto written = std::exchange(written_, nullptr)) written(true);
      return;
    }
    if (bytesSent_ >= turnEnd) return YieldToLoop();
    const auto state = source_->Fill(block_, BlockSize());
    if (state == DataSource::State::More) continue;
    source_ = nullptr;
    if (state == DataSource::State::Failed) {
      const auto written = std::move(written_);
      Break();
      return written(false);
    }
  }
}

std::size_t SocketWriter::BlockSize() const {
  const auto sent = bytesSent_ - startBytes_;
  if (sent < kFastFrom) return kBlockSize;
  const auto milliseconds = loop_.Now() - startedAt_;
  return sent / kFastBytesPerMillisecond < milliseconds ? kBlockSize : kLargeBlockSize;
}

void SocketWriter::YieldToLoop() {
  loop_.Post([this, turn = turn_, mine = *turn_] {
    if (*turn == mine) Pump();
  });
}

// Whether everything is out. While it is not, the time-out runs from the last byte that was taken.
bool SocketWriter::Flush() {
  if (sent_ == block_.size()) return true;
  const auto count = socket_.Write(std::string_view(block_).substr(sent_));
  sent_ += count;
  bytesSent_ += count;
  if (sent_ < block_.size()) {
    if (count > 0 || !stuckTimer_.Running()) stuckTimer_.Start(timeout_);
    return false;
  }
  stuckTimer_.Stop();
  block_.clear();
  sent_ = 0;
  return true;
}

}  // namespace quillon
