// The event loop and the network over window messages: sockets report to a message-only window
// (WSAAsyncSelect), and waiting dispatches every message of the thread, so that automation calls
// and dialogs go on.
#include <winsock2.h>
// Winsock comes before the rest of Windows.
#include <windows.h>
#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <utility>
#include <ws2tcpip.h>

#include "platform/LookupQueue.h"
#include "platform/Platform.h"
#include "platform/SystemAddress.h"
#include "ports/Network.h"

namespace quillon {
namespace {

// In one round. Each message of a socket may bring a block of data, and its handling the next one.
constexpr int kMostMessages = 32;

constexpr UINT kWorkMessage = WM_APP;
// Each stream has a message number of its own, so that a message left over from a closed socket
// cannot reach a new one that got the same handle.
constexpr UINT kFirstStreamMessage = WM_APP + 1;
constexpr UINT kLastStreamMessage = 0xBFFF;
constexpr wchar_t kWindowClass[] = L"QuillonNetworkLoop";

class Win32Stream;

class Win32NetworkLoop final : public NetworkLoop {
 public:
  Win32NetworkLoop();
  ~Win32NetworkLoop() override;

  TickCount Now() const override { return ::GetTickCount64(); }
  bool RunUntil(const std::function<bool()>& done, TickCount deadline) override;
  void RunPending() override;
  void Post(std::function<void()> work) override { queue_->Post(std::move(work)); }

  std::unique_ptr<Lookup> Resolve(const std::string& host, std::uint16_t port,
                                  LookupResult result) override {
    return StartLookup(queue_, &LookUpAndWait, host, port, std::move(result));
  }
  std::unique_ptr<ByteStream> Connect(const SocketAddress& address,
                                      ByteStream::Handler& handler) override;
  std::string LocalHostName() override;

  HWND Window() const noexcept { return window_; }
  UINT Adopt(Win32Stream& stream);
  void Forget(UINT message) { streams_.erase(message); }

 private:
  static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void OnMessage(UINT message, LPARAM lParam);
  bool DispatchMessages();

  HWND window_ = nullptr;
  std::shared_ptr<WorkQueue> queue_;
  std::map<UINT, Win32Stream*> streams_;
  UINT nextMessage_ = kFirstStreamMessage;
};

class Win32Stream final : public ByteStream {
 public:
  Win32Stream(Win32NetworkLoop& loop, SOCKET socket, Handler& handler)
      : loop_(loop), handler_(&handler), socket_(socket), message_(loop.Adopt(*this)) {}
  ~Win32Stream() override {
    loop_.Forget(message_);
    ::closesocket(socket_);
  }

  bool Connect(const SocketAddress& address) {
    constexpr long kEvents = FD_CONNECT | FD_READ | FD_WRITE | FD_CLOSE;
    if (::WSAAsyncSelect(socket_, loop_.Window(), message_, kEvents) != 0) return false;
    sockaddr_storage storage{};
    const auto size = static_cast<int>(ToSystemAddress(address, storage));
    const bool refused =
        ::connect(socket_, reinterpret_cast<const sockaddr*>(&storage), size) != 0 &&
        ::WSAGetLastError() != WSAEWOULDBLOCK;
    // Reported from the loop like a later failure.
    if (refused) PostEvent(FD_CONNECT, ::WSAGetLastError());
    return true;
  }

  void SetHandler(Handler& handler) override { handler_ = &handler; }

  void WantRead(bool want) override {
    wantRead_ = want;
    // Winsock announces data once, and not again before it is read.
    if (want && std::exchange(readable_, false)) PostEvent(FD_READ, 0);
  }

  IoResult Read(std::span<char> buffer) override {
    const int count = ::recv(socket_, buffer.data(), static_cast<int>(buffer.size()), 0);
    if (count > 0) {
      // The close is announced once, even when data stands before it.
      if (closing_) PostEvent(FD_READ, 0);
      return {IoResult::Status::Ok, static_cast<std::size_t>(count), 0};
    }
    if (count == 0) return {IoResult::Status::Closed, 0, 0};
    return Failure();
  }

  IoResult Write(std::string_view bytes) override {
    std::size_t sent = 0;
    // FD_WRITE comes only after a send that was refused, so a short one is followed by another.
    while (sent < bytes.size()) {
      const auto piece = bytes.substr(sent, kLargestWrite);
      const int count = ::send(socket_, piece.data(), static_cast<int>(piece.size()), 0);
      if (count == SOCKET_ERROR) {
        if (sent > 0 && ::WSAGetLastError() == WSAEWOULDBLOCK) break;
        return Failure();
      }
      sent += static_cast<std::size_t>(count);
    }
    return {IoResult::Status::Ok, sent, 0};
  }

  std::string LocalAddress() const override { return LocalAddressText(socket_); }
  bool IsIPv6() const override { return LocalAddress().find(':') != std::string::npos; }

  // May destroy the stream.
  void OnEvent(int event, int error) {
    switch (event) {
      case FD_CONNECT:
        return OnConnect(error);
      case FD_READ:
      case FD_CLOSE:
        // A close may come before the last data has been read; reading tells which it is.
        if (!connected_) return;
        closing_ = closing_ || event == FD_CLOSE;
        if (wantRead_) return handler_->OnStreamReadable();
        readable_ = true;
        return;
      case FD_WRITE:
        if (connected_) handler_->OnStreamWritable();
        return;
      default:
        return;
    }
  }

 private:
  static constexpr std::size_t kLargestWrite = 1U << 20U;

  static IoResult Failure() {
    const int error = ::WSAGetLastError();
    if (error == WSAEWOULDBLOCK) return {IoResult::Status::WouldBlock, 0, 0};
    return {IoResult::Status::Failed, 0, error};
  }

  void PostEvent(int event, int error) {
    ::PostMessageW(loop_.Window(), message_, 0,
                   MAKELPARAM(static_cast<WORD>(event), static_cast<WORD>(error)));
  }

  void OnConnect(int error) {
    if (error != 0) return handler_->OnStreamFailed(error);
    connected_ = true;
    handler_->OnStreamConnected();
  }

  Win32NetworkLoop& loop_;
  Handler* handler_;
  SOCKET socket_;
  UINT message_;
  bool connected_ = false;
  bool wantRead_ = true;
  bool readable_ = false;
  bool closing_ = false;
};

Win32NetworkLoop::Win32NetworkLoop() {
  WSADATA data{};
  if (::WSAStartup(MAKEWORD(2, 2), &data) != 0) throw std::runtime_error("no Winsock 2.2");
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = &WindowProc;
  windowClass.hInstance = ::GetModuleHandleW(nullptr);
  windowClass.lpszClassName = kWindowClass;
  ::RegisterClassExW(&windowClass);  // fails when another loop did it, and that is as good
  window_ = ::CreateWindowExW(0, kWindowClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              windowClass.hInstance, nullptr);
  if (window_ == nullptr) throw std::runtime_error("no message window");
  ::SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  queue_ = std::make_shared<WorkQueue>(
      [window = window_] { return ::PostMessageW(window, kWorkMessage, 0, 0) != FALSE; });
}

Win32NetworkLoop::~Win32NetworkLoop() {
  queue_->Close();
  ::DestroyWindow(window_);
  ::WSACleanup();
}

LRESULT CALLBACK Win32NetworkLoop::WindowProc(HWND window, UINT message, WPARAM wParam,
                                              LPARAM lParam) {
  auto* const loop =
      reinterpret_cast<Win32NetworkLoop*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  if (loop == nullptr || message < WM_APP || message > kLastStreamMessage) {
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  loop->Contain([&] { loop->OnMessage(message, lParam); });
  return 0;
}

void Win32NetworkLoop::OnMessage(UINT message, LPARAM lParam) {
  if (message == kWorkMessage) return queue_->Run(*this);
  const auto found = streams_.find(message);
  if (found == streams_.end()) return;
  found->second->OnEvent(WSAGETSELECTEVENT(lParam), WSAGETSELECTERROR(lParam));
}

UINT Win32NetworkLoop::Adopt(Win32Stream& stream) {
  do {
    nextMessage_ = nextMessage_ == kLastStreamMessage ? kFirstStreamMessage : nextMessage_ + 1;
  } while (streams_.contains(nextMessage_));
  streams_[nextMessage_] = &stream;
  return nextMessage_;
}

// One round of messages. False when the program is being ended; the message of it is put back for
// the outer loops.
bool Win32NetworkLoop::DispatchMessages() {
  MSG message{};
  for (int count = 0; count < kMostMessages; ++count) {
    // Posted messages come before all others: the last one of a round is the user's.
    const UINT kind = count < kMostMessages - 1 ? 0U : PM_QS_INPUT | PM_QS_PAINT;
    if (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | kind) == 0) return true;
    if (message.message == WM_QUIT) {
      ::PostQuitMessage(static_cast<int>(message.wParam));
      return false;
    }
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
  return true;
}

void Win32NetworkLoop::RunPending() {
  Wait wait(*this);
  DispatchMessages();
  wait.EndRound(Now());
}

bool Win32NetworkLoop::RunUntil(const std::function<bool()>& done, TickCount deadline) {
  Wait wait(*this);
  for (;;) {
    if (done()) return true;
    const auto now = Now();
    if (now >= deadline) return false;
    const auto until = std::min(deadline, Timers().NextDue());
    const auto left = std::min<TickCount>(until > now ? until - now : 0, 60000);
    ::MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(left), QS_ALLINPUT,
                                  MWMO_INPUTAVAILABLE);
    const bool running = DispatchMessages();
    wait.EndRound(Now());
    if (!running) return done();
  }
}

std::unique_ptr<ByteStream> Win32NetworkLoop::Connect(const SocketAddress& address,
                                                      ByteStream::Handler& handler) {
  const SOCKET socket = ::socket(address.isIPv6 ? AF_INET6 : AF_INET, SOCK_STREAM, IPPROTO_TCP);
  if (socket == INVALID_SOCKET) return nullptr;
  // Commands are written whole, so nothing is gained by waiting for more.
  const BOOL on = TRUE;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
  auto stream = std::make_unique<Win32Stream>(*this, socket, handler);
  if (!stream->Connect(address)) return nullptr;
  return stream;
}

std::string Win32NetworkLoop::LocalHostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), static_cast<int>(name.size())) != 0) return {};
  return name.data();
}

}  // namespace

std::unique_ptr<NetworkLoop> MakeNetworkLoop() {
  return std::make_unique<Win32NetworkLoop>();
}

}  // namespace quillon
