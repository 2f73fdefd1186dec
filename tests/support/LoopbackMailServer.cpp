#include "support/LoopbackMailServer.h"

#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace quillon::testing {
namespace {

// In scattered places, and the same ones in each run.
unsigned Scattered(unsigned number) {
  number *= 2654435761U;
  return number ^ (number >> 15);
}

std::string WithDots(std::string_view text) {
  std::string dotted = text.starts_with('.') ? "." : "";
  for (std::size_t i = 0; i < text.size(); ++i) {
    dotted += text[i];
    if (text[i] == '\n' && text.substr(i + 1).starts_with('.')) dotted += '.';
  }
  return dotted + ".\r\n";
}

}  // namespace

// Lines in, replies out.
class LoopbackMailServer::Session {
 public:
  Session(LoopbackMailServer& server, SystemSocket socket) : server_(server), socket_(socket) {}

  // With its line end; empty when the client has gone.
  std::string Line() {
    for (;;) {
      if (const auto end = arrived_.find('\n', seen_); end != std::string::npos) {
        auto line = arrived_.substr(seen_, end + 1 - seen_);
        seen_ = end + 1;
        return line;
      }
      arrived_.erase(0, std::exchange(seen_, 0));
      std::array<char, 16384> buffer;
      const auto count =
          ::recv(socket_, buffer.data(), static_cast<SystemIoSize>(buffer.size()), 0);
      if (count <= 0) return {};
      arrived_.append(buffer.data(), static_cast<std::size_t>(count));
    }
  }

  // False when the connection is over: the client has gone, or it was time to hang up.
  bool Reply(std::string_view text) {
    const unsigned once = server_.hangUpOnceIn_;
    if (once != 0 && Scattered(++server_.replies_) % once == 0) return false;
    while (!text.empty()) {
#ifdef MSG_NOSIGNAL
      constexpr int kFlags = MSG_NOSIGNAL;
#else
      constexpr int kFlags = 0;
#endif
      const auto count =
          ::send(socket_, text.data(), static_cast<SystemIoSize>(text.size()), kFlags);
      if (count <= 0) return false;
      text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

 private:
  LoopbackMailServer& server_;
  const SystemSocket socket_;
  std::string arrived_;
  std::size_t seen_ = 0;  // of it
};

LoopbackMailServer::LoopbackMailServer(std::vector<std::string> mailbox)
    : mailbox_(std::move(mailbox)) {
  Open(smtp_, &LoopbackMailServer::ServeSmtp);
  Open(pop_, &LoopbackMailServer::ServePop);
}

LoopbackMailServer::~LoopbackMailServer() {
  ending_ = true;
  Close(smtp_);
  Close(pop_);
}

std::vector<std::string> LoopbackMailServer::Received() const {
  const std::lock_guard lock(mutex_);
  return received_;
}

void LoopbackMailServer::Open(Listener& listener, Serve serve) {
  listener.socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  SocketAddress address;
  address.bytes = {127, 0, 0, 1};
  sockaddr_storage storage{};
  auto size = static_cast<socklen_t>(ToSystemAddress(address, storage));
  auto* const system = reinterpret_cast<sockaddr*>(&storage);
  if (::bind(listener.socket, system, size) != 0 || ::listen(listener.socket, 16) != 0 ||
      ::getsockname(listener.socket, system, &size) != 0) {
    throw std::runtime_error("cannot listen on 127.0.0.1");
  }
  listener.port = ntohs(reinterpret_cast<const sockaddr_in*>(&storage)->sin_port);
  listener.thread = std::thread([this, &listener, serve] { Accept(listener, serve); });
}

void LoopbackMailServer::Accept(Listener& listener, Serve serve) {
  auto& connections = listener.connections;
  for (;;) {
    const SystemSocket socket = ::accept(listener.socket, nullptr, nullptr);
    if (ending_) {
      CloseSystemSocket(socket);
      break;
    }
    connections.remove_if([](Connection& connection) {
      if (connection.ended) connection.thread.join();
      return connection.ended.load();
    });
    auto& connection = connections.emplace_back();
    connection.socket = socket;
    connection.thread = std::thread([this, &connection, serve] {
      Session session(*this, connection.socket);
      (this->*serve)(session);
      CloseSystemSocket(connection.socket);
      connection.ended = true;
    });
  }
  for (auto& connection : connections) connection.thread.join();
}

// A connection of our own wakes the listener.
void LoopbackMailServer::Close(Listener& listener) {
  SocketAddress address;
  address.bytes = {127, 0, 0, 1};
  address.port = listener.port;
  sockaddr_storage storage{};
  const auto size = static_cast<socklen_t>(ToSystemAddress(address, storage));
  const SystemSocket knock = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  static_cast<void>(::connect(knock, reinterpret_cast<sockaddr*>(&storage), size));
  listener.thread.join();
  CloseSystemSocket(knock);
  CloseSystemSocket(listener.socket);
}

bool LoopbackMailServer::TakeData(Session& session) {
  if (!session.Reply("354 go on\r\n")) return false;
  std::string message;
  for (;;) {
    const auto line = session.Line();
    if (line.empty()) return false;
    if (line == ".\r\n") break;
    message.append(line, line.starts_with('.') ? 1 : 0);
  }
  {
    const std::lock_guard lock(mutex_);
    received_.push_back(std::move(message));
  }
  return session.Reply("250 taken\r\n");
}

void LoopbackMailServer::ServeSmtp(Session& session) {
  bool goesOn = session.Reply("220 ready\r\n");
  while (goesOn) {
    const auto line = session.Line();
    if (line.empty()) return;
    const std::string_view verb = std::string_view(line).substr(0, 4);
    if (verb == "DATA") {
      goesOn = TakeData(session);
    } else if (verb == "VRFY") {
      goesOn = session.Reply("250 <" + line.substr(5, line.size() - 7) + "@example.org>\r\n");
    } else if (verb == "QUIT") {
      session.Reply("221 bye\r\n");
      return;
    } else {
      goesOn = session.Reply("250 yes\r\n");
    }
  }
}

void LoopbackMailServer::ServePop(Session& session) {
  bool goesOn = session.Reply("+OK ready\r\n");
  while (goesOn) {
    const auto line = session.Line();
    if (line.empty()) return;
    const std::string_view verb = std::string_view(line).substr(0, 4);
    const auto blank = line.find(' ');
    const bool one = blank != std::string::npos && verb != "USER" && verb != "PASS";
    const auto number = one ? std::stoul(line.substr(blank)) : 0;
    std::string reply = "+OK\r\n";
    if (number > mailbox_.size()) {
      reply = "-ERR no such message\r\n";
    } else if (verb == "STAT") {
      reply = "+OK " + std::to_string(mailbox_.size()) + " 1000\r\n";
    } else if (verb == "RETR" || verb.starts_with("TOP")) {
      reply += WithDots(mailbox_.at(number - 1));
    } else if (verb == "UIDL" || verb == "LIST") {
      if (one) {
        reply = "+OK " + std::to_string(number) + " 1000\r\n";
      } else {
        for (std::size_t i = 1; i <= mailbox_.size(); ++i) {
          reply += std::to_string(i) + " 1000\r\n";
        }
        reply += ".\r\n";
      }
    }
    goesOn = session.Reply(reply) && verb != "QUIT";
  }
}

}  // namespace quillon::testing
