#include "TlsSession.h"

#include <array>
#include <new>

namespace mailhost {

TlsSession::TlsSession(SSL_CTX* context)
    : ssl_(SSL_new(context)), in_(BIO_new(BIO_s_mem())), out_(BIO_new(BIO_s_mem())) {
  if (!ssl_ || in_ == nullptr || out_ == nullptr) throw std::bad_alloc();
  SSL_set_bio(ssl_.get(), in_, out_);
  SSL_set_accept_state(ssl_.get());
}

TlsSession::State TlsSession::Receive(std::string_view bytes, std::string& text) {
  if (state_ == State::kEnded || state_ == State::kFailed) return state_;
  ERR_clear_error();
  BIO_write(in_, bytes.data(), static_cast<int>(bytes.size()));
  if (state_ == State::kHandshake) {
    const int done = SSL_do_handshake(ssl_.get());
    if (done != 1) {
      return SSL_get_error(ssl_.get(), done) == SSL_ERROR_WANT_READ ? state_ : Fail();
    }
    state_ = State::kOpen;
  }
  std::array<char, 16384> buffer;
  for (;;) {
    const int count = SSL_read(ssl_.get(), buffer.data(), static_cast<int>(buffer.size()));
    if (count > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
      continue;
    }
    const int error = SSL_get_error(ssl_.get(), count);
    if (error == SSL_ERROR_WANT_READ) return state_;
    if (error != SSL_ERROR_ZERO_RETURN) return Fail();
    return state_ = State::kEnded;
  }
}

TlsSession::State TlsSession::Fail() {
  failure_ = OpenSslReason();
  return state_ = State::kFailed;
}

void TlsSession::Seal(std::string_view text) {
  ERR_clear_error();
  // A memory BIO takes everything, so that nothing is left of the text.
  if (SSL_write(ssl_.get(), text.data(), static_cast<int>(text.size())) <= 0) Fail();
}

void TlsSession::SealEnd() {
  if (state_ != State::kFailed) SSL_shutdown(ssl_.get());
  ERR_clear_error();
}

std::string TlsSession::TakeOutput() {
  std::string output(BIO_ctrl_pending(out_), '\0');
  if (!output.empty()) BIO_read(out_, output.data(), static_cast<int>(output.size()));
  return output;
}

std::string TlsSession::Description() const {
  std::string text = SSL_get_version(ssl_.get());
  text.append(" ").append(SSL_get_cipher_name(ssl_.get()));
  const char* const name = SSL_get_servername(ssl_.get(), TLSEXT_NAMETYPE_host_name);
  if (name != nullptr) text.append(" for ").append(name);
  return text;
}

std::optional<std::string> TlsSession::Binding(std::string_view type) const {
  if (type == "tls-server-end-point") return EndPointBinding();
  // Later versions have no such binding (RFC 8446 appendix C.5).
  if (type != "tls-unique" || SSL_version(ssl_.get()) > TLS1_2_VERSION) return std::nullopt;
  // Sessions are never resumed here, so that the client's message was the first one.
  std::array<char, EVP_MAX_MD_SIZE> finished{};
  const std::size_t size = SSL_get_peer_finished(ssl_.get(), finished.data(), finished.size());
  return std::string(finished.data(), size);
}

// RFC 5929 4.1: the hash of the certificate's own signature, MD5 and SHA-1 taken as SHA-256.
std::string TlsSession::EndPointBinding() const {
  X509* const certificate = SSL_get_certificate(ssl_.get());
  int hash = NID_undef;
  X509_get_signature_info(certificate, &hash, nullptr, nullptr, nullptr);
  const EVP_MD* method = EVP_get_digestbynid(hash);
  if (method == nullptr || hash == NID_md5 || hash == NID_sha1) method = EVP_sha256();
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned size = 0;
  if (X509_digest(certificate, method, digest.data(), &size) != 1) return {};
  return {reinterpret_cast<const char*>(digest.data()), size};
}

}  // namespace mailhost
