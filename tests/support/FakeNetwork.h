// A network and an event loop without a system: peers are objects, and time passes only when
// nothing else can happen, so no test sleeps. A wait that could never end fails at once.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/Network.h"

namespace quillon::testing {

class FakeNetwork;

// What stands between the wire and a peer: encryption.
class PeerFilter {
 public:
  virtual ~PeerFilter() = default;
  // Whether what the peer says has to wait.
  virtual bool HoldsBack() const = 0;
  // What goes over the wire for that.
  virtual std::string Outgoing(std::string_view text) = 0;
  // What the peer gets of the wire's bytes; appends what the wire gets in answer.
  virtual std::string Incoming(std::string_view bytes, std::string& answer) = 0;
};

// The other end of one connection.
class FakePeer {
 public:
  virtual ~FakePeer() = default;
  virtual void OnConnected() {}
  virtual void OnBytes(std::string_view bytes) = 0;
  virtual void OnClientClosed() {}
  // All that was said has been read: for what is too long to be said at once.
  virtual void OnDrained() {}

  // What the client reads next: one chunk at a time, each in a read of its own, not before its
  // time.
  void Say(std::string chunk);
  // Nothing that is said from now on arrives earlier than that.
  void Wait(TickCount delay);
  // Behind what has been said.
  void Hangup();
  // How many bytes the client may still write; with `perTurn` no more than so many between two
  // events.
  std::size_t appetite = static_cast<std::size_t>(-1);
  std::size_t perTurn = static_cast<std::size_t>(-1);

  // From the next byte on.
  void SetFilter(std::unique_ptr<PeerFilter> filter) { filter_ = std::move(filter); }

 private:
  friend class FakeNetwork;
  friend class FakeStream;

  struct Chunk {
    TickCount due;
    std::optional<std::string> bytes;  // none: the end
  };

  void Take(std::string_view bytes);
  void Put(TickCount due, std::optional<std::string> text);
  void PutHeld();

  const EventLoop* loop_ = nullptr;
  std::unique_ptr<PeerFilter> filter_;
  std::deque<Chunk> chunks_;
  std::deque<Chunk> held_;  // what waits for the filter
  TickCount notBefore_ = 0;
};

class FakeNetwork final : public NetworkLoop {
 public:
  // Answers each connection with a peer; null refuses it.
  std::function<std::shared_ptr<FakePeer>()> accept;
  enum class Weather { Fine, NoSuchHost, NoAnswer, NoSockets };
  Weather weather = Weather::Fine;
  std::vector<SocketAddress> addresses = {SocketAddress{}};  // of every name
  std::size_t connects = 0;                                  // addresses that were tried

  TickCount timePerLook = 0;  // passes whenever somebody looks at the clock

  TickCount Now() const override { return now_ += timePerLook; }
  bool RunUntil(const std::function<bool()>& done, TickCount deadline) override;
  void RunPending() override;
  void Post(std::function<void()> work) override { posted_.push_back(std::move(work)); }
  std::unique_ptr<Lookup> Resolve(const std::string& host, std::uint16_t port,
                                  LookupResult result) override;
  std::unique_ptr<ByteStream> Connect(const SocketAddress& address,
                                      ByteStream::Handler& handler) override;
  std::string LocalHostName() override { return "work station.example"; }

 private:
  friend class FakeStream;

  bool RunReady(Wait& wait);
  TickCount NextEvent();

  mutable TickCount now_ = 1000;
  std::deque<std::function<void()>> posted_;
  std::vector<class FakeStream*> streams_;
};

}  // namespace quillon::testing
