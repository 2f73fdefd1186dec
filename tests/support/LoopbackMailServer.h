// SMTP and POP3 on ports of 127.0.0.1 for as many connections as come, each on a thread of its own.
//
// The mailbox is the same in every session. There must be a NetworkLoop while it lives.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/SystemAddress.h"

namespace quillon::testing {

class LoopbackMailServer {
 public:
  explicit LoopbackMailServer(std::vector<std::string> mailbox);
  ~LoopbackMailServer();
  LoopbackMailServer(const LoopbackMailServer&) = delete;
  LoopbackMailServer& operator=(const LoopbackMailServer&) = delete;

  std::uint16_t SmtpPort() const noexcept { return smtp_.port; }
  std::uint16_t PopPort() const noexcept { return pop_.port; }

  // Hangs up in place of one reply out of so many; 0: never.
  void HangUpOnceIn(unsigned replies) { hangUpOnceIn_ = replies; }

  // The messages that were accepted, as they came over the wire, with the dots taken out.
  std::vector<std::string> Received() const;

 private:
  class Session;
  struct Connection {
    SystemSocket socket;
    std::thread thread;
    std::atomic<bool> ended = false;
  };
  struct Listener {
    SystemSocket socket{};
    std::uint16_t port = 0;
    std::thread thread;
    std::list<Connection> connections;  // of the thread
  };
  using Serve = void (LoopbackMailServer::*)(Session&);

  void Open(Listener& listener, Serve serve);
  void Accept(Listener& listener, Serve serve);
  void Close(Listener& listener);
  void ServeSmtp(Session& session);
  void ServePop(Session& session);
  bool TakeData(Session& session);

  const std::vector<std::string> mailbox_;
  std::atomic<unsigned> hangUpOnceIn_ = 0;
  std::atomic<unsigned> replies_ = 0;
  std::atomic<bool> ending_ = false;
  mutable std::mutex mutex_;
  std::vector<std::string> received_;
  Listener smtp_;
  Listener pop_;
};

}  // namespace quillon::testing
