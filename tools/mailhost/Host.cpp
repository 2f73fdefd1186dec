#include "Host.h"

#include <cstdio>
#include <string>
#include <utility>

#include "ScriptSession.h"
#include "SmtpSession.h"

namespace mailhost {

namespace {

Service MakeService(const Options& options) {
  Service service;
  if (options.NeedsTls()) service.tls.emplace(options.tls);
  service.offersTls = options.startTls;
  service.requiresTls = options.requireTls;
  service.requiresLogin = options.requireLogin;
  service.offersApop = options.apop;
  service.account = {options.user, options.password.value_or(""), options.token};
  service.mechanisms = options.mechanisms;
  service.smtpCapabilities = options.smtpCapabilities;
  service.popCapabilities = options.popCapabilities;
  return service;
}

}  // namespace

Host::Host(const Options& options)
    : log_(options.log.empty() ? Log() : Log(options.log)),
      service_(MakeService(options)),
      discards_(options.noStore),
      smtp_(loop_, *options.smtpPort, Accepter(Protocol::kSmtp, false)),
      pop_(loop_, *options.popPort, Accepter(Protocol::kPop, false)) {
  if (options.smtpsPort) smtps_.emplace(loop_, *options.smtpsPort, Accepter(Protocol::kSmtp, true));
  if (options.popsPort) pops_.emplace(loop_, *options.popsPort, Accepter(Protocol::kPop, true));
  for (const std::string& file : options.faults) LoadFaults(file, faults_);
  service_.rules = std::move(faults_.rules);
  if (!options.store.empty()) store_.emplace(options.store);
  maildrop_.store = store_ ? &*store_ : nullptr;
  maildrop_.exclusive = !options.noLock;
}

std::optional<std::uint16_t> Host::SmtpsPort() const {
  return smtps_ ? std::optional(smtps_->Port()) : std::nullopt;
}

std::optional<std::uint16_t> Host::PopsPort() const {
  return pops_ ? std::optional(pops_->Port()) : std::nullopt;
}

Listener::Accepted Host::Accepter(Protocol protocol, bool secured) {
  return
      [this, protocol, secured](UniqueFd socket) { Accept(protocol, secured, std::move(socket)); };
}

void Host::Accept(Protocol protocol, bool secured, UniqueFd socket) {
  const auto closed = [this](Connection& connection) {
    loop_.Later([this, &connection] { connections_.erase(&connection); });
  };
  auto owned = std::make_unique<Connection>(loop_, std::move(socket), log_, protocol, closed);
  Connection& connection = *owned;
  connections_.emplace(&connection, std::move(owned));
  connection.Start(MakeSession(protocol, secured, connection));
}

std::unique_ptr<Session> Host::MakeSession(Protocol protocol, bool secured,
                                           Connection& connection) {
  const auto& script = protocol == Protocol::kSmtp ? faults_.smtp : faults_.pop;
  if (script) {
    return std::make_unique<ScriptSession>(
        connection, *script, secured ? service_.tls->NewSession() : nullptr, MakeDeliveries(),
        [this, protocol](const std::string& text) { ReportMismatch(protocol, text); });
  }
  if (protocol == Protocol::kPop) {
    return std::make_unique<PopSession>(connection, service_, secured, maildrop_);
  }
  return std::make_unique<SmtpSession>(connection, service_, secured, MakeDeliveries());
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
