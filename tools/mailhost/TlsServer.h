// What all TLS connections of the host share: its certificate and the versions it speaks.
#pragma once

#include <memory>
#include <string>

#include "OpenSsl.h"
#include "TlsSession.h"

namespace mailhost {

struct TlsSettings {
  // PEM files; without them the host makes a certificate of its own.
  std::string certificate{};
  std::string key{};
  // Gets the root of the own certificate, as PEM.
  std::string writeRoot{};
  // "1.2", "1.3", or a range such as "1.2-1.3".
  std::string versions = "1.2-1.3";
};

class TlsServer {
 public:
  // Throws UsageError when the settings cannot be had.
  explicit TlsServer(const TlsSettings& settings);

  std::unique_ptr<TlsSession> NewSession() const;

 private:
  void LoadCertificate(const TlsSettings& settings);
  void UseOwnCertificate(const std::string& rootFile);
  void LimitVersions(const std::string& versions);

  ContextPtr context_;
};

}  // namespace mailhost
