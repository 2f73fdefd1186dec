#include "support/FakeNetwork.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quillon::testing {

class FakeStream final : public ByteStream {
 public:
  FakeStream(FakeNetwork& network, Handler& handler, std::shared_ptr<FakePeer> peer, bool silent)
      : network_(network), handler_(&handler), peer_(std::move(peer)), connecting_(!silent) {
    network_.streams_.push_back(this);
  }
  ~FakeStream() override {
    std::erase(network_.streams_, this);
    if (peer_) peer_->OnClientClosed();
  }

  void SetHandler(Handler& handler) override { handler_ = &handler; }
  void WantRead(bool want) override { wantRead_ = want; }
  std::string LocalAddress() const override { return "192.0.2.7"; }
  bool IsIPv6() const override { return false; }

  IoResult Read(std::span<char> buffer) override {
    if (!HasInput()) return {IoResult::Status::WouldBlock, 0, 0};
    auto& bytes = peer_->chunks_.front().bytes;
    if (!bytes) return {IoResult::Status::Closed, 0, 0};
    const auto count = std::min(buffer.size(), bytes->size());
    std::copy_n(bytes->begin(), count, buffer.begin());
    bytes->erase(0, count);
    if (bytes->empty()) peer_->chunks_.pop_front();
    if (peer_->chunks_.empty()) peer_->OnDrained();
    return {IoResult::Status::Ok, count, 0};
  }

  IoResult Write(std::string_view bytes) override {
    const bool gone = std::any_of(
        peer_->chunks_.begin(), peer_->chunks_.end(),
        [this](const auto& chunk) { return !chunk.bytes && chunk.due <= network_.now_; });
    if (gone) return {IoResult::Status::Failed, 0, 32};
    const auto room = std::min(peer_->appetite, turn_);
    const auto count = std::min(room, bytes.size());
    wantWrite_ = count < bytes.size();
    peer_->appetite -= count;
    turn_ -= count;
    if (count == 0) return {IoResult::Status::WouldBlock, 0, 0};
    peer_->Take(bytes.substr(0, count));
    return {IoResult::Status::Ok, count, 0};
  }

  bool HasInput() const {
    return !peer_->chunks_.empty() && peer_->chunks_.front().due <= network_.now_;
  }

  TickCount NextEvent() const {
    const bool waits = peer_ != nullptr && wantRead_ && !peer_->chunks_.empty();
    return waits ? peer_->chunks_.front().due : kNoDeadline;
  }

  // Whether there was something to do. May destroy the stream.
  bool Dispatch() {
    if (std::exchange(connecting_, false)) {
      if (peer_ == nullptr) {
        handler_->OnStreamFailed(111);
        return true;
      }
      turn_ = peer_->perTurn;
      connected_ = true;
      peer_->OnConnected();
      handler_->OnStreamConnected();
      return true;
    }
    if (!connected_) return false;
    turn_ = peer_->perTurn;
    if (wantRead_ && HasInput()) {
      handler_->OnStreamReadable();
      return true;
    }
    if (wantWrite_ && peer_->appetite > 0) {
      wantWrite_ = false;
      handler_->OnStreamWritable();
      return true;
    }
    return false;
  }

 private:
  FakeNetwork& network_;
  Handler* handler_;
  std::shared_ptr<FakePeer> peer_;
  bool connecting_;
  bool connected_ = false;
  bool wantRead_ = true;
  bool wantWrite_ = false;
  std::size_t turn_ = 0;
};

void FakePeer::Say(std::string chunk) {
  if (!chunk.empty()) Put(std::max(loop_->Now(), notBefore_), std::move(chunk));
}

void FakePeer::Put(TickCount due, std::optional<std::string> text) {
  if (filter_ && filter_->HoldsBack()) {
    held_.push_back({due, std::move(text)});
    return;
  }
  if (filter_ && text) text = filter_->Outgoing(*text);
  chunks_.push_back({due, std::move(text)});
}

void FakePeer::PutHeld() {
  while (!held_.empty() && !filter_->HoldsBack()) {
    auto chunk = std::move(held_.front());
    held_.pop_front();
    Put(std::max(loop_->Now(), chunk.due), std::move(chunk.bytes));
  }
}

void FakePeer::Take(std::string_view bytes) {
  if (!filter_) return OnBytes(bytes);
  std::string answer;
  const auto text = filter_->Incoming(bytes, answer);
  if (!answer.empty()) chunks_.push_back({loop_->Now(), std::move(answer)});
  PutHeld();
  if (!text.empty()) OnBytes(text);
}

void FakePeer::Wait(TickCount delay) {
  notBefore_ = std::max(loop_->Now(), notBefore_) + delay;
}

void FakePeer::Hangup() {
  Put(std::max(loop_->Now(), notBefore_), std::nullopt);
}

bool FakeNetwork::RunReady(Wait& wait) {
  for (auto count = posted_.size(); count > 0 && !posted_.empty(); --count) {
    const auto work = std::move(posted_.front());
    posted_.pop_front();
    Contain(work);
  }
  bool ran = false;
  const auto streams = streams_;
  for (auto* const stream : streams) {
    const bool alive = std::find(streams_.begin(), streams_.end(), stream) != streams_.end();
    if (alive) Contain([&] { ran = stream->Dispatch(); });
    if (ran) break;
  }
  const bool due = Timers().NextDue() <= now_;
  wait.EndRound(now_);
  return ran || due || !posted_.empty();
}

void FakeNetwork::RunPending() {
  Wait wait(*this);
  while (RunReady(wait)) {
  }
}

TickCount FakeNetwork::NextEvent() {
  auto next = Timers().NextDue();
  for (const auto* stream : streams_) next = std::min(next, stream->NextEvent());
  return next;
}

bool FakeNetwork::RunUntil(const std::function<bool()>& done, TickCount deadline) {
  Wait wait(*this);
  for (;;) {
    if (done()) return true;
    if (now_ >= deadline) return false;
    if (RunReady(wait)) continue;
    if (done()) return true;
    const auto next = std::min(deadline, NextEvent());
    if (next == kNoDeadline) throw std::logic_error("a wait that nothing can end");
    now_ = std::max(now_, next);
  }
}

std::unique_ptr<Network::Lookup> FakeNetwork::Resolve(const std::string&, std::uint16_t port,
                                                      LookupResult result) {
  struct Pending final : Lookup {
    std::shared_ptr<LookupResult> result;
    ~Pending() override { *result = nullptr; }
  };
  auto lookup = std::make_unique<Pending>();
  lookup->result = std::make_shared<LookupResult>(std::move(result));
  if (weather == Weather::NoAnswer) return lookup;
  auto found = weather == Weather::NoSuchHost ? std::vector<SocketAddress>() : addresses;
  for (auto& address : found) address.port = port;
  Post([pending = lookup->result, found] {
    if (const auto call = std::exchange(*pending, nullptr)) call(found, found.empty() ? 11001 : 0);
  });
  return lookup;
}

std::unique_ptr<ByteStream> FakeNetwork::Connect(const SocketAddress&,
                                                 ByteStream::Handler& handler) {
  ++connects;
  if (weather == Weather::NoSockets) return nullptr;
  const bool silent = weather == Weather::NoAnswer;
  auto peer = silent ? nullptr : accept();
  if (peer) peer->loop_ = this;
  return std::make_unique<FakeStream>(*this, handler, std::move(peer), silent);
}

}  // namespace quillon::testing
