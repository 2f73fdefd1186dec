// The event loop and the network over poll and non-blocking sockets.
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "platform/LookupQueue.h"
#include "platform/Platform.h"
#include "platform/SystemAddress.h"
#include "ports/Network.h"

namespace quillon {
namespace {

class PosixStream;

class PosixNetworkLoop final : public NetworkLoop {
 public:
  PosixNetworkLoop();
  ~PosixNetworkLoop() override;

  TickCount Now() const override;
  bool RunUntil(const std::function<bool()>& done, TickCount deadline) override;
  void RunPending() override {
    Wait wait(*this);
    Round(wait, Now());
  }
  void Post(std::function<void()> work) override { queue_->Post(std::move(work)); }

  std::unique_ptr<Lookup> Resolve(const std::string& host, std::uint16_t port,
                                  LookupResult result) override;
  std::unique_ptr<ByteStream> Connect(const SocketAddress& address,
                                      ByteStream::Handler& handler) override;
  std::string LocalHostName() override;

  void Forget(const PosixStream* stream) {
    *std::find(streams_.begin(), streams_.end(), stream) = nullptr;
  }

 private:
  void Round(Wait& wait, TickCount deadline);

  int wakeDescriptor_;
  std::shared_ptr<WorkQueue> queue_;
  // A null takes the place of one that is gone, until no other wait counts on the places.
  std::vector<PosixStream*> streams_;
};

class PosixStream final : public ByteStream {
 public:
  // connectError: the connection failed at once; it is reported from the loop like a later failure.
  PosixStream(PosixNetworkLoop& loop, int descriptor, int connectError, Handler& handler)
      : loop_(loop), handler_(&handler), descriptor_(descriptor), connectError_(connectError) {}
  ~PosixStream() override {
    loop_.Forget(this);
    ::close(descriptor_);
  }

  void SetHandler(Handler& handler) override { handler_ = &handler; }
  void WantRead(bool want) override { wantRead_ = want; }

  IoResult Read(std::span<char> buffer) override {
    for (;;) {
      const auto count = ::recv(descriptor_, buffer.data(), buffer.size(), 0);
      if (count > 0) return {IoResult::Status::Ok, static_cast<std::size_t>(count), 0};
      if (count == 0) return {IoResult::Status::Closed, 0, 0};
      if (errno != EINTR) return Failure();
    }
  }

  IoResult Write(std::string_view bytes) override {
    for (;;) {
      const auto count = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count >= 0) {
        wantWrite_ = static_cast<std::size_t>(count) < bytes.size();
        return {IoResult::Status::Ok, static_cast<std::size_t>(count), 0};
      }
      if (errno == EINTR) continue;
      const auto result = Failure();
      wantWrite_ = result.status == IoResult::Status::WouldBlock;
      return result;
    }
  }

  std::string LocalAddress() const override { return LocalAddressText(descriptor_); }
  bool IsIPv6() const override { return LocalAddress().find(':') != std::string::npos; }

  pollfd Interest() const {
    const int events =
        (wantRead_ && !connecting_ ? POLLIN : 0) | (connecting_ || wantWrite_ ? POLLOUT : 0);
    // Without an interest the descriptor is left out, or a hang-up would wake every wait.
    return {events == 0 ? -1 : descriptor_, static_cast<short>(events), 0};
  }

  // May destroy the stream.
  void Dispatch(short events) {
    if (connecting_) return FinishConnecting();
    const bool broken = (events & (POLLERR | POLLHUP | POLLNVAL)) != 0;
    if (wantRead_ && (broken || (events & POLLIN) != 0)) return handler_->OnStreamReadable();
    if (wantWrite_) {
      wantWrite_ = false;
      handler_->OnStreamWritable();
    }
  }

 private:
  static IoResult Failure() {
    if (errno == EWOULDBLOCK) return {IoResult::Status::WouldBlock, 0, 0};
    return {IoResult::Status::Failed, 0, errno};
  }

  void FinishConnecting() {
    int error = connectError_;
    socklen_t size = sizeof error;
    if (error == 0 && ::getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
      error = errno;
    }
    connecting_ = false;
    if (error == 0) return handler_->OnStreamConnected();
    wantRead_ = false;
    handler_->OnStreamFailed(error);
  }

  PosixNetworkLoop& loop_;
  Handler* handler_;
  int descriptor_;
  int connectError_;
  bool connecting_ = true;
  bool wantRead_ = true;
  bool wantWrite_ = false;
};

PosixNetworkLoop::PosixNetworkLoop() : wakeDescriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  queue_ = std::make_shared<WorkQueue>([descriptor = wakeDescriptor_] {
    const std::uint64_t one = 1;
    return ::write(descriptor, &one, sizeof one) == sizeof one;
  });
}

PosixNetworkLoop::~PosixNetworkLoop() {
  queue_->Close();
  ::close(wakeDescriptor_);
}

TickCount PosixNetworkLoop::Now() const {
  using std::chrono::duration_cast;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<TickCount>(duration_cast<std::chrono::milliseconds>(now).count());
}

bool PosixNetworkLoop::RunUntil(const std::function<bool()>& done, TickCount deadline) {
  Wait wait(*this);
  for (;;) {
    if (done()) return true;
    if (Now() >= deadline) return false;
    Round(wait, deadline);
  }
}

// Sockets come before timers, so that an answer that is there already wins over the time-out of
// waiting for it.
void PosixNetworkLoop::Round(Wait& wait, TickCount deadline) {
  if (wait.Outermost()) std::erase(streams_, nullptr);
  std::vector<pollfd> polled{{wakeDescriptor_, POLLIN, 0}};
  for (const auto* stream : streams_) {
    polled.push_back(stream != nullptr ? stream->Interest() : pollfd{-1, 0, 0});
  }
  const auto until = std::min(deadline, Timers().NextDue());
  const auto now = Now();
  const auto left = until > now ? until - now : 0;
  const int timeout =
      until == kNoDeadline ? -1 : static_cast<int>(std::min<TickCount>(left, 60000));
  if (::poll(polled.data(), polled.size(), timeout) > 0) {
    if (polled[0].revents != 0) {
      std::uint64_t count = 0;
      [[maybe_unused]] const auto ignored = ::read(wakeDescriptor_, &count, sizeof count);
      queue_->Run(*this);
    }
    for (std::size_t index = 1; index < polled.size(); ++index) {
      auto* const stream = streams_[index - 1];
      const auto events = polled[index].revents;
      if (events != 0 && stream != nullptr) Contain([&] { stream->Dispatch(events); });
    }
  }
  wait.EndRound(Now());
}

std::unique_ptr<Network::Lookup> PosixNetworkLoop::Resolve(const std::string& host,
                                                           std::uint16_t port,
                                                           LookupResult result) {
  return StartLookup(queue_, &LookUpAndWait, host, port, std::move(result));
}

std::unique_ptr<ByteStream> PosixNetworkLoop::Connect(const SocketAddress& address,
                                                      ByteStream::Handler& handler) {
  sockaddr_storage storage{};
  const auto size = static_cast<socklen_t>(ToSystemAddress(address, storage));
  const int descriptor =
      ::socket(storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
  if (descriptor < 0) return nullptr;
  // Commands are written whole, so nothing is gained by waiting for more.
  const int on = 1;
  ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  int error = 0;
  if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&storage), size) != 0) {
    error = errno == EINPROGRESS ? 0 : errno;
  }
  auto stream = std::make_unique<PosixStream>(*this, descriptor, error, handler);
  streams_.push_back(stream.get());
  return stream;
}

std::string PosixNetworkLoop::LocalHostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return {};
  return name.data();
}

}  // namespace

std::unique_ptr<NetworkLoop> MakeNetworkLoop() {
  return std::make_unique<PosixNetworkLoop>();
}

}  // namespace quillon
