// What is to be told of a session's connection and its last operation: how it was secured and
// logged in to, and what the server really said. Bytes as they came, without secrets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/ServerWords.h"
#include "net/SecureConnect.h"

namespace quillon {

class SessionReport {
 public:
  void OnOperation();
  void OnConnecting(const std::string& host, std::uint16_t port);
  // The system's words for what keeps the connection from being made.
  void OnNoConnection(std::string_view reason) { obstacle_ = reason; }
  void OnConnected(std::string address) { address_ = std::move(address); }
  void OnSecured(const TlsFacts& facts);
  // What the server says that it can do, an entry each.
  void OnCapabilities(std::vector<std::string> capabilities) {
    capabilities_ = std::move(capabilities);
  }
  void OnLogin(std::string_view method) { login_ = method; }
  // A line of the client, with secrets masked.
  void OnCommand(std::string_view line);
  // What the server answers next, when that is no command; empty: it greets.
  void OnStep(std::string what);
  void OnReply(std::vector<std::string> lines);

  // How the operation came to its number, as `MailResult::detail` has it; empty when there is
  // nothing to say.
  std::string Detail(std::int32_t number) const;

  const std::string& Host() const noexcept { return host_; }
  std::uint16_t Port() const noexcept { return port_; }
  // "TLS 1.2"; empty when the connection was not encrypted.
  const std::string& TlsVersion() const noexcept { return tlsVersion_; }
  const std::string& Certificate() const noexcept { return certificate_; }
  // The numeric one; empty when there was no connection.
  const std::string& Address() const noexcept { return address_; }
  const std::string& Cipher() const noexcept { return cipher_; }
  // In DER; empty when none was shown.
  const std::string& CertificateBytes() const noexcept { return certificateBytes_; }
  const std::string& Greeting() const noexcept { return greeting_; }
  const std::vector<std::string>& Capabilities() const noexcept { return capabilities_; }
  // The method; empty when there was no login.
  const std::string& Login() const noexcept { return login_; }
  // Every line, behind one with host, port and command; lines end in CR LF but for the last.
  std::string LastReply() const;

 private:
  std::string Place() const { return host_ + ":" + std::to_string(port_); }

  std::string host_;
  std::uint16_t port_ = 0;
  std::string obstacle_;
  std::string tlsVersion_;
  std::string certificate_;
  std::string address_;
  std::string cipher_;
  std::string certificateBytes_;
  std::string greeting_;
  std::vector<std::string> capabilities_;
  std::string login_;
  std::string command_;             // its name; empty before the first
  bool answered_ = false;           // that command
  std::string answer_;              // "host:port answered MAIL FROM with: "
  std::vector<std::string> lines_;  // of the last reply
};

}  // namespace quillon
