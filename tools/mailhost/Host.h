// The whole host: both listeners, what their sessions share, and the connections that are open.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>

#include "ContentReceiver.h"
#include "EventLoop.h"
#include "FaultFile.h"
#include "Listener.h"
#include "Log.h"
#include "Maildir.h"
#include "Options.h"
#include "PopSession.h"
#include "Service.h"

namespace mailhost {

class Host {
 public:
  // Listens at once. Throws UsageError or std::system_error.
  explicit Host(const Options& options);

  std::uint16_t SmtpPort() const { return smtp_.Port(); }
  std::uint16_t PopPort() const { return pop_.Port(); }
  // Within TLS, when they are asked for.
  std::optional<std::uint16_t> SmtpsPort() const;
  std::optional<std::uint16_t> PopsPort() const;

  // Serves until a signal ends it.
  void Run() { loop_.Run(); }
  // True when a client has left a conversation script.
  bool HadMismatch() const { return hadMismatch_; }

 private:
  Listener::Accepted Accepter(Protocol protocol, bool secured);
  void Accept(Protocol protocol, bool secured, UniqueFd socket);
  std::unique_ptr<Session> MakeSession(Protocol protocol, bool secured, Connection& connection);
  BeginDelivery MakeDeliveries();
  void ReportMismatch(Protocol protocol, const std::string& text);

  EventLoop loop_;
  Log log_;
  Faults faults_;
  Service service_;
  bool hadMismatch_ = false;
  const bool discards_;
  std::optional<Maildir> store_;
  Maildrop maildrop_;
  std::unordered_map<Connection*, std::unique_ptr<Connection>> connections_;
  Listener smtp_;
  Listener pop_;
  std::optional<Listener> smtps_;
  std::optional<Listener> pops_;
};

}  // namespace mailhost
