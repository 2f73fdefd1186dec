#include "Host.h"

#include <cstdio>
#include <string>
#include <utility>

#include "ScriptSession.h"
#include "SmtpSession.h"

namespace mailhost {

Host::Host(const Options& options)
    : log_(options.log.empty() ? Log() : Log(options.log)),
      discards_(options.noStore),
      smtp_(loop_, *options.smtpPort,
            [this](UniqueFd socket) { Accept(Protocol::kSmtp, std::move(socket)); }),
      pop_(loop_, *options.popPort,
           [this](UniqueFd socket) { Accept(Protocol::kPop, std::move(socket)); }) {
  for (const std::string& file : options.faults) LoadFaults(file, faults_);
  if (!options.store.empty()) store_.emplace(options.store);
  maildrop_.store = store_ ? &*store_ : nullptr;
  maildrop_.user = options.user;
  maildrop_.password = options.password.value_or("");
  maildrop_.exclusive = !options.noLock;
}

void Host::Accept(Protocol protocol, UniqueFd socket) {
  const auto closed = [this](Connection& connection) {
    loop_.Later([this, &connection] { connections_.erase(&connection); });
  };
  auto owned = std::make_unique<Connection>(loop_, std::move(socket), log_, protocol, closed);
  Connection& connection = *owned;
  connections_.emplace(&connection, std::move(owned));
  connection.Start(MakeSession(protocol, connection));
}

std::unique_ptr<Session> Host::MakeSession(Protocol protocol, Connection& connection) {
  const auto& script = protocol == Protocol::kSmtp ? faults_.smtp : faults_.pop;
  if (script) {
    return std::make_unique<ScriptSession>(
        connection, *script, MakeDeliveries(),
        [this, protocol](const std::string& text) { ReportMismatch(protocol, text); });
  }
  if (protocol == Protocol::kPop) {
    return std::make_unique<PopSession>(connection, faults_.rules, maildrop_);
  }
  return std::make_unique<SmtpSession>(connection, faults_.rules, MakeDeliveries());
}

BeginDelivery Host::MakeDeliveries() {
  return [this]() -> std::unique_ptr<Delivery> {
    if (discards_) return std::make_unique<DiscardingDelivery>();
    return store_->Begin();
  };
}

void Host::ReportMismatch(Protocol protocol, const std::string& text) {
  hadMismatch_ = true;
  log_.Event(protocol, "error: " + text);
  std::fprintf(stderr, "mailhost: %s\n", text.c_str());
}

}  // namespace mailhost
