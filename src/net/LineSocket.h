// A connection that delivers lines and takes bytes, over any connected ByteStream.
//
// Lines end at LF; a CR before it is taken off with it. A line longer than the buffer arrives in
// pieces, so memory stays bounded whatever the peer sends. Events for one socket never nest: what
// arrives while a handler runs (which may wait for something else) is delivered after it has
// returned, in order, and nothing is lost. Lines come in turns of a limited number, between which
// the loop serves others. A handler that throws has had its event; what follows comes with the next
// turn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ports/Network.h"

namespace quillon {

class LineSocket : private ByteStream::Handler {
 public:
  class Handler {
   public:
    virtual ~Handler() = default;
    // `complete` is false for a piece whose line goes on in the next one. The text lives until the
    // handler returns.
    virtual void OnLine(std::string_view text, bool complete) = 0;
    // All lines that came with one read have been handed on.
    virtual void OnLinesRead() {}
    virtual void OnSendReady() = 0;
    // The end of what the peer said, when it has no line end; OnClosed follows.
    virtual void OnUnfinishedLine(std::string_view text) = 0;
    // The connection is gone: error 0 when the peer closed it, else the system's number.
    virtual void OnClosed(int error) = 0;
  };

  LineSocket(EventLoop& loop, Handler& handler)
      : handler_(handler), nextTurn_(loop, [this] { OnTurn(); }) {}
  ~LineSocket() override = default;
  LineSocket(const LineSocket&) = delete;
  LineSocket& operator=(const LineSocket&) = delete;

  // Takes over a connected stream; the events begin.
  void Attach(std::unique_ptr<ByteStream> stream);
  bool IsOpen() const noexcept { return stream_ != nullptr; }

  // Gives the stream back, to be attached again when it has been secured; no event follows. Null,
  // and the connection is closed, when the peer has said something behind the last line, which
  // would be taken for a part of what comes next. May be called from inside a handler.
  std::unique_ptr<ByteStream> Detach();

  // Writes what the system takes now and returns how many bytes that was; when it is less than all,
  // OnSendReady follows. A connection that broke takes nothing: what the peer had sent before is
  // delivered first, then OnClosed.
  std::size_t Write(std::string_view bytes);

  // Gives the next line of those that have come, if there is a whole one: for a handler in OnLine
  // that wants another at once, which it then has instead of an event. The text lives until the
  // next line, or until the handler returns.
  bool TakeLine(std::string_view& line);

  // Whether the line that came last stands between two CR LF. Of a peer that has not ended any line
  // so on this connection, each does.
  bool IsBetweenCrLfs() const noexcept { return !crLfSeen_ || (afterCrLf_ && atCrLf_); }

  // Delivers now what has come and not been delivered yet, a little of it if there is much; nothing
  // from inside a handler.
  void Poll();

  // In all, on every connection.
  std::uint64_t BytesRead() const noexcept { return bytesRead_; }

  // No event follows. May be called from inside a handler.
  void Close();

  std::string LocalAddress() const { return stream_ ? stream_->LocalAddress() : std::string(); }
  bool IsIPv6() const { return stream_ && stream_->IsIPv6(); }

 private:
  void OnStreamConnected() override {}
  void OnStreamFailed(int) override {}
  void OnStreamReadable() override;
  void OnStreamWritable() override;

  bool ReadSome();
  void OnTurn();
  void Deliver();
  bool DeliverPiece();
  void Compact();
  void DeliverEnd(int error);
  void ReadDeclined();
  template <typename Event>
  bool Tell(const Event& event);

  Handler& handler_;
  std::unique_ptr<ByteStream> stream_;
  std::unique_ptr<char[]> buffer_;  // made with the first connection
  std::size_t filled_ = 0;          // bytes in the buffer,
  std::size_t start_ = 0;           // of which so many have been delivered,
  std::size_t scanned_ = 0;         // and so many are known to hold no further line end
  int linesLeft_ = 0;               // of this turn
  std::uint64_t bytesRead_ = 0;
  std::uint64_t connection_ = 0;  // counts them: another one may stand at the same address
  std::optional<int> end_;        // the peer's end is being delivered, with this error
  Timer nextTurn_;
  bool inPieces_ = false;  // the first line of the buffer has been delivered in part
  bool atCrLf_ = true;     // how the last line ended; the begin counts as an end
  bool afterCrLf_ = true;  // how the one before it did
  bool crLfSeen_ = false;
  bool linesRead_ = false;  // OnLinesRead is due behind the last line
  bool delivering_ = false;
  bool writable_ = false;  // came while delivering
  bool declined_ = false;  // so did data of a newer connection
};

}  // namespace quillon
