// One client: cuts what arrives into lines for the session, and sends what the session queues.
//
// Memory stays bounded whatever the client does: a line has a greatest length, and a client that
// does not read its replies is not read from either.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "EventLoop.h"
#include "Log.h"
#include "Outbox.h"
#include "Session.h"
#include "Wire.h"

namespace mailhost {

class Connection : public EventHandler {
 public:
  // `closed` is called once, at the end; it must not destroy the connection before
  // EventLoop::Later.
  using Closed = std::function<void(Connection&)>;

  Connection(EventLoop& loop, UniqueFd socket, Log& log, Protocol protocol, Closed closed);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Hands the connection its session and opens the conversation.
  void Start(std::unique_ptr<Session> session);

  Outbox& Out() { return outbox_; }
  Log& ConversationLog() { return log_; }

  // Reads nothing more from the client, for good, so that its writes block in the end.
  void StopReading();
  // Reads on, but makes nothing of what comes.
  void StopListening() { deaf_ = true; }

  // Begins TLS when everything queued has been sent; the session hears OnSecured() when the
  // handshake is done. What the client has sent in clear behind its last line ends the connection.
  void Secure(std::unique_ptr<TlsSession> tls, const WireFaults& faults);
  // Null on a connection that is not encrypted.
  const TlsSession* Tls() const { return wire_.Tls(); }

  void OnEvents(std::uint32_t events) override;

 private:
  // Takes the conversation as far as it goes now.
  void Pump();
  void Receive();
  void NoteTls();
  void BeginTls();
  // Gives the session what has arrived; true when only the lack of room for replies stopped it.
  bool HandleInput();
  bool HandleLine(std::string_view input, std::size_t& used);
  // True when further input can be handled at once.
  bool FlushOutbox();
  enum class ClosedBy { kHost, kClient };
  void Close(ClosedBy who);
  void UpdateInterest();

  EventLoop& loop_;
  Wire wire_;
  Log& log_;
  const Protocol protocol_;
  Closed onClosed_;
  std::unique_ptr<Session> session_;
  Outbox outbox_;
  std::string input_;
  std::optional<EventLoop::TimerId> pause_;
  std::unique_ptr<TlsSession> coming_;  // begins when everything in clear has been sent
  WireFaults faults_;
  std::uint32_t interest_ = 0;
  bool skippingLine_ = false;  // the rest of a line that was too long
  bool blocked_ = false;       // the socket takes no more
  bool stalled_ = false;
  bool deaf_ = false;
  bool handshaking_ = false;
  bool ended_ = false;  // the client has sent its last byte
  bool closed_ = false;
};

}  // namespace mailhost
