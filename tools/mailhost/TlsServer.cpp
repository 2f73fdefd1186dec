#include "TlsServer.h"

#include <array>
#include <cstdio>
#include <openssl/pem.h>
#include <string_view>

#include "OwnCertificate.h"
#include "UsageError.h"

namespace mailhost {

namespace {

struct Version {
  std::string_view name;
  int number;
};

constexpr std::array<Version, 4> kVersions{{{"1.0", TLS1_VERSION},
                                            {"1.1", TLS1_1_VERSION},
                                            {"1.2", TLS1_2_VERSION},
                                            {"1.3", TLS1_3_VERSION}}};

int NumberOf(std::string_view name) {
  for (const Version& version : kVersions) {
    if (version.name == name) return version.number;
  }
  throw UsageError("--tls-version takes 1.0 to 1.3, or a range such as 1.2-1.3, not \"" +
                   std::string(name) + "\"");
}

void WriteRoot(const std::string& path, X509* root) {
  const std::unique_ptr<std::FILE, OpenSslDeleter<std::fclose>> file(
      std::fopen(path.c_str(), "we"));
  if (!file || PEM_write_X509(file.get(), root) != 1) {
    throw UsageError(path + ": the root certificate cannot be written");
  }
}

}  // namespace

TlsServer::TlsServer(const TlsSettings& settings) : context_(SSL_CTX_new(TLS_server_method())) {
  if (!context_) throw UsageError("TLS cannot be had: " + OpenSslReason());
  // Weak keys and old versions are among the things to try a client with.
  SSL_CTX_set_security_level(context_.get(), 0);
  // A resumed session would hide the certificate that a test is about.
  SSL_CTX_set_session_cache_mode(context_.get(), SSL_SESS_CACHE_OFF);
  SSL_CTX_set_options(context_.get(), SSL_OP_NO_TICKET | SSL_OP_NO_RENEGOTIATION);
  LimitVersions(settings.versions);
  if (settings.certificate.empty()) {
    UseOwnCertificate(settings.writeRoot);
  } else {
    LoadCertificate(settings);
  }
}

void TlsServer::LimitVersions(const std::string& versions) {
  const std::size_t dash = versions.find('-');
  const int lowest = NumberOf(versions.substr(0, dash));
  const int highest = dash == std::string::npos ? lowest : NumberOf(versions.substr(dash + 1));
  if (lowest > highest) throw UsageError("--tls-version: the lower version comes first");
  SSL_CTX_set_min_proto_version(context_.get(), lowest);
  SSL_CTX_set_max_proto_version(context_.get(), highest);
}

void TlsServer::LoadCertificate(const TlsSettings& settings) {
  SSL_CTX* const context = context_.get();
  if (SSL_CTX_use_certificate_chain_file(context, settings.certificate.c_str()) != 1) {
    throw UsageError(settings.certificate + ": " + OpenSslReason());
  }
  if (SSL_CTX_use_PrivateKey_file(context, settings.key.c_str(), SSL_FILETYPE_PEM) != 1) {
    throw UsageError(settings.key + ": " + OpenSslReason());
  }
}

void TlsServer::UseOwnCertificate(const std::string& rootFile) {
  const OwnCertificate own = MakeOwnCertificate();
  if (SSL_CTX_use_certificate(context_.get(), own.certificate.get()) != 1 ||
      SSL_CTX_use_PrivateKey(context_.get(), own.key.get()) != 1) {
    throw UsageError("the own certificate cannot be used: " + OpenSslReason());
  }
  if (!rootFile.empty()) WriteRoot(rootFile, own.root.get());
}

std::unique_ptr<TlsSession> TlsServer::NewSession() const {
  return std::make_unique<TlsSession>(context_.get());
}

}  // namespace mailhost
