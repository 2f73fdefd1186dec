// A network whose only server says what the fuzzer wrote, in chunks, and then hangs up or falls
// silent. It hears what it is sent and does not care. Time passes only when nothing else can
// happen; a wait that nothing can end is a crash.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "MemoryFiles.h"
#include "ports/Network.h"

namespace quillon::fuzz {

class FuzzNetwork final : public NetworkLoop {
 public:
  struct Script {
    std::string_view says;
    std::size_t chunk = 1;  // bytes per read
    std::size_t taken = 1;  // bytes per write
    bool hangsUp = false;   // behind the last byte; else it falls silent
  };

  explicit FuzzNetwork(const Script& script) : script_(script) {}

  TickCount Now() const override { return now_; }
  void Post(std::function<void()> work) override { posted_.push_back(std::move(work)); }
  std::string LocalHostName() override { return "fuzz"; }

  std::unique_ptr<Lookup> Resolve(const std::string&, std::uint16_t, LookupResult) override {
    Require(false);  // the host is a numeric address
    return nullptr;
  }

  std::unique_ptr<ByteStream> Connect(const SocketAddress&, ByteStream::Handler& handler) override {
    auto stream = std::make_unique<Stream>(*this, handler);
    stream_ = stream.get();
    return stream;
  }

  bool RunUntil(const std::function<bool()>& done, TickCount deadline) override {
    Wait wait(*this);
    while (!done()) {
      if (now_ >= deadline) return false;
      if (RunReady(wait)) continue;
      const auto next = std::min(deadline, Timers().NextDue());
      Require(next != kNoDeadline);
      now_ = std::max(now_, next);
      wait.EndRound(now_);
    }
    return true;
  }

  void RunPending() override {
    Wait wait(*this);
    while (RunReady(wait)) {
    }
  }

 private:
  class Stream final : public ByteStream {
   public:
    Stream(FuzzNetwork& owner, Handler& handler) : owner_(owner), handler_(&handler) {}
    ~Stream() override {
      if (owner_.stream_ == this) owner_.stream_ = nullptr;
    }

    void SetHandler(Handler& handler) override { handler_ = &handler; }
    void WantRead(bool want) override { wantRead_ = want; }
    std::string LocalAddress() const override { return "127.0.0.1"; }
    bool IsIPv6() const override { return false; }

    IoResult Read(std::span<char> buffer) override {
      auto& says = owner_.script_.says;
      if (says.empty()) {
        const bool end = owner_.script_.hangsUp;
        return {end ? IoResult::Status::Closed : IoResult::Status::WouldBlock, 0, 0};
      }
      const auto count = std::min({buffer.size(), says.size(), owner_.script_.chunk});
      std::copy_n(says.begin(), count, buffer.begin());
      says.remove_prefix(count);
      return {IoResult::Status::Ok, count, 0};
    }

    IoResult Write(std::string_view bytes) override {
      const auto count = std::min(bytes.size(), owner_.script_.taken);
      wantWrite_ = count < bytes.size();
      return {IoResult::Status::Ok, count, 0};
    }

    bool Dispatch() {
      const auto& script = owner_.script_;
      if (!std::exchange(connected_, true)) {
        handler_->OnStreamConnected();
      } else if (wantRead_ && (!script.says.empty() || script.hangsUp)) {
        handler_->OnStreamReadable();
      } else if (std::exchange(wantWrite_, false)) {
        handler_->OnStreamWritable();
      } else {
        return false;
      }
      return true;
    }

   private:
    FuzzNetwork& owner_;
    Handler* handler_;
    bool connected_ = false;
    bool wantRead_ = true;
    bool wantWrite_ = false;
  };

  bool RunReady(Wait& wait) {
    Require(++rounds_ < 10'000'000);
    const auto posted = std::exchange(posted_, {});
    for (const auto& work : posted) Contain(work);
    bool ran = !posted.empty() || Timers().NextDue() <= now_;
    Contain([&] { ran = (stream_ != nullptr && stream_->Dispatch()) || ran; });
    wait.EndRound(now_);
    return ran;
  }

  Script script_;
  TickCount now_ = 0;
  std::uint64_t rounds_ = 0;
  std::vector<std::function<void()>> posted_;
  Stream* stream_ = nullptr;
};

// The first two bytes of the input are how the rest arrives.
inline FuzzNetwork::Script TakeScript(std::string_view& input) {
  const auto take = [&input]() -> std::size_t {
    if (input.empty()) return 0;
    const auto byte = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    return byte;
  };
  FuzzNetwork::Script script;
  const auto shape = take();
  script.hangsUp = (shape & 1U) != 0;
  script.chunk = (shape & 2U) != 0 ? 1 + (shape >> 2U) : 100'000;
  script.taken = 1 + take() * 16;
  script.says = input;
  return script;
}

}  // namespace quillon::fuzz
