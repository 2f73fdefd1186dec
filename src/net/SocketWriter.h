// Writes to a line socket as fast as it takes the bytes, and never waits for it: what it does not
// take now goes out when it is ready again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "net/LineSocket.h"
#include "ports/EventLoop.h"

namespace quillon {

// A text of any length, in blocks.
class DataSource {
 public:
  enum class State { More, End, Failed };

  virtual ~DataSource() = default;
  // Appends about `wanted` bytes to the block.
  virtual State Fill(std::string& block, std::size_t wanted) = 0;
  // About how many bytes it has in all; 0 when that is not known.
  virtual std::uint64_t Size() const { return 0; }
};

class SocketWriter {
 public:
  // `stuck`: the connection has taken nothing for the send time-out.
  SocketWriter(EventLoop& loop, LineSocket& socket, std::function<void()> stuck);
  ~SocketWriter();

  // Milliseconds.
  void SetTimeout(TickCount timeout) { timeout_ = timeout; }

  // One command line with its CR LF in one write. False, and nothing is sent, when the line holds
  // CR, LF or NUL. It stands behind what is waiting, which must be the end of a source.
  bool WriteCommand(std::string_view line);

  // Several commands, each with its CR LF, in one write; as WriteCommand otherwise.
  bool WriteCommands(const std::vector<std::string>& lines);

  // The whole source; `written` is called when the last byte has been taken (true) or the source
  // failed (false). The source must live until then or until Break.
  void SocketSendData(DataSource& source, std::function<void(bool)> written);

  // Whether bytes are waiting to be taken.
  bool Busy() const noexcept { return source_ != nullptr || sent_ < block_.size(); }

  // Forgets what has not been written.
  void Break();

  void OnSendReady();

  std::uint64_t BytesSent() const noexcept { return bytesSent_; }

 private:
  void Pump();
  bool Flush();
  std::size_t BlockSize() const;
  void YieldToLoop();

  EventLoop& loop_;
  LineSocket& socket_;
  Timer stuckTimer_;
  TickCount timeout_ = 0;
  std::string block_;
  std::size_t sent_ = 0;  // of the block
  DataSource* source_ = nullptr;
  std::function<void(bool)> written_;
  std::uint64_t bytesSent_ = 0;
  std::uint64_t startBytes_ = 0;  // of them, before the source
  TickCount startedAt_ = 0;       // when the source's turn began
  std::shared_ptr<int> turn_;     // counts breaks: work posted before one is void after it
};

}  // namespace quillon
