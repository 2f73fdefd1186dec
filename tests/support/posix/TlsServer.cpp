#include "support/posix/TlsServer.h"

#include <array>

namespace quillon::testing {

TlsServer::TlsServer(const IssuedCertificate& own, const std::vector<IssuedCertificate>& others,
                     int version)
    : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free),
      in_(BIO_new(BIO_s_mem())),
      out_(BIO_new(BIO_s_mem())) {
  SSL_CTX_set_min_proto_version(context_.get(), version);
  SSL_CTX_set_max_proto_version(context_.get(), version);
  SSL_CTX_use_certificate(context_.get(), own.certificate.get());
  SSL_CTX_use_PrivateKey(context_.get(), own.key.get());
  for (const auto& other : others) SSL_CTX_add1_chain_cert(context_.get(), other.certificate.get());
  ssl_ = {SSL_new(context_.get()), SSL_free};
  SSL_set_bio(ssl_.get(), in_, out_);
  SSL_set_accept_state(ssl_.get());
}

void TlsServer::Take(std::string_view bytes) {
  BIO_write(in_, bytes.data(), static_cast<int>(bytes.size()));
  if (!Secured()) SSL_do_handshake(ssl_.get());
  if (!Secured()) return;
  std::array<char, 16384> block;
  for (int count = 0;
       (count = SSL_read(ssl_.get(), block.data(), static_cast<int>(block.size()))) > 0;) {
    text_.append(block.data(), static_cast<std::size_t>(count));
  }
}

void TlsServer::Say(std::string_view text) {
  SSL_write(ssl_.get(), text.data(), static_cast<int>(text.size()));
}

void TlsServer::Close() {
  SSL_shutdown(ssl_.get());
}

std::string TlsServer::TakeOutput() {
  char* bytes = nullptr;
  const auto size = BIO_get_mem_data(out_, &bytes);
  std::string output(bytes, static_cast<std::size_t>(size));
  BIO_reset(out_);
  return output;
}

std::string TlsServer::ServerName() const {
  const auto* const name = SSL_get_servername(ssl_.get(), TLSEXT_NAMETYPE_host_name);
  return name != nullptr ? name : "";
}

}  // namespace quillon::testing
