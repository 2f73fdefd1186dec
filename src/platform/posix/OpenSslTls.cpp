// TLS with OpenSSL over memory buffers, for the tests.
#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Platform.h"
#include "ports/Tls.h"

namespace quillon {
namespace {

template <auto Release>
struct X509Releaser {
  template <typename T>
  void operator()(T* object) const {
    Release(object);
  }
};

void ReleaseStack(STACK_OF(X509) * stack) {
  sk_X509_pop_free(stack, X509_free);
}

using SslContext = std::unique_ptr<SSL_CTX, X509Releaser<SSL_CTX_free>>;
using SslConnection = std::unique_ptr<SSL, X509Releaser<SSL_free>>;
using X509Pointer = std::unique_ptr<X509, X509Releaser<X509_free>>;
using X509Stack = std::unique_ptr<STACK_OF(X509), X509Releaser<ReleaseStack>>;
using X509Store = std::unique_ptr<X509_STORE, X509Releaser<X509_STORE_free>>;
using Verification = std::unique_ptr<X509_STORE_CTX, X509Releaser<X509_STORE_CTX_free>>;

constexpr std::size_t kMaxText = 16384;

std::string LastError() {
  const auto* const text = ERR_reason_error_string(ERR_peek_last_error());
  ERR_clear_error();
  return text != nullptr ? text : "TLS failed";
}

std::string Der(X509* certificate) {
  unsigned char* bytes = nullptr;
  const int size = i2d_X509(certificate, &bytes);
  std::string der;
  if (size > 0) der.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  OPENSSL_free(bytes);
  return der;
}

X509Pointer FromDer(std::string_view der) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
  return X509Pointer(d2i_X509(nullptr, &bytes, static_cast<long>(der.size())));
}

class OpenSslSession final : public TlsSession {
 public:
  OpenSslSession(SSL_CTX* context, const TlsSettings& settings)
      : ssl_(SSL_new(context)), in_(BIO_new(BIO_s_mem())), out_(BIO_new(BIO_s_mem())) {
    if (!settings.clientCertificate.empty()) reason_ = "this system has no store of certificates";
    std::string name = settings.serverName;
    if (!name.empty()) {
      SSL_ctrl(ssl_.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, name.data());
    }
    SSL_set_bio(ssl_.get(), in_, out_);
    SSL_set_connect_state(ssl_.get());
  }

  TlsStatus Handshake(ByteQueue& input, std::string& output) override {
    if (!reason_.empty()) return TlsStatus::Failed;
    Feed(input);
    return Outcome(SSL_do_handshake(ssl_.get()), output);
  }

  TlsStatus Open(ByteQueue& input, std::string& text, std::string& output) override {
    Feed(input);
    std::array<char, kMaxText> block;
    const int count = SSL_read(ssl_.get(), block.data(), static_cast<int>(block.size()));
    if (count > 0) text.append(block.data(), static_cast<std::size_t>(count));
    return Outcome(count, output);
  }

  TlsStatus Seal(std::string_view text, std::string& output) override {
    return Outcome(SSL_write(ssl_.get(), text.data(), static_cast<int>(text.size())), output);
  }

  std::size_t MaxText() const override { return kMaxText; }

  void Shutdown(std::string& output) override {
    SSL_shutdown(ssl_.get());
    ERR_clear_error();
    Drain(output);
  }

  TlsFacts Facts() override {
    TlsFacts facts;
    facts.version = SSL_version(ssl_.get());
    facts.cipher = SSL_get_cipher_name(ssl_.get());
    facts.bits = SSL_get_cipher_bits(ssl_.get(), nullptr);
    auto* const chain = SSL_get_peer_cert_chain(ssl_.get());
    const int count = chain != nullptr ? sk_X509_num(chain) : 0;
    facts.chain.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) facts.chain.push_back(Der(sk_X509_value(chain, i)));
    return facts;
  }

  // Without the extended master secret another connection could have the same (RFC 7627).
  std::string UniqueBinding() override {
    if (SSL_version(ssl_.get()) != TLS1_2_VERSION || SSL_get_extms_support(ssl_.get()) != 1)
      return {};
    std::array<char, EVP_MAX_MD_SIZE> finished;
    const auto size = SSL_get_finished(ssl_.get(), finished.data(), finished.size());
    return {finished.data(), size};
  }

  const std::string& Reason() const override { return reason_; }

 private:
  // OpenSSL keeps what it cannot use yet.
  void Feed(ByteQueue& input) {
    if (input.Size() == 0) return;
    BIO_write(in_, input.Data(), static_cast<int>(input.Size()));
    input.Drop(input.Size());
  }

  void Drain(std::string& output) {
    char* bytes = nullptr;
    const auto size = BIO_get_mem_data(out_, &bytes);
    if (size > 0) output.append(bytes, static_cast<std::size_t>(size));
    BIO_reset(out_);
  }

  TlsStatus Outcome(int result, std::string& output) {
    const int error = SSL_get_error(ssl_.get(), result);
    Drain(output);
    if (result > 0) return TlsStatus::Ok;
    if (error == SSL_ERROR_WANT_READ) return TlsStatus::MoreInput;
    if (error == SSL_ERROR_ZERO_RETURN) return TlsStatus::Closed;
    reason_ = LastError();
    return TlsStatus::Failed;
  }

  SslConnection ssl_;
  BIO* in_;  // both belong to the connection
  BIO* out_;
  std::string reason_;
};

struct FaultOfError {
  int error;
  CertificateFault fault;
};

constexpr FaultOfError kFaults[] = {
    {X509_V_OK, CertificateFault::None},
    {X509_V_ERR_CERT_HAS_EXPIRED, CertificateFault::Expired},
    {X509_V_ERR_CERT_NOT_YET_VALID, CertificateFault::NotYetValid},
    {X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT, CertificateFault::SelfSigned},
    {X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN, CertificateFault::UnknownIssuer},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT, CertificateFault::Incomplete},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY, CertificateFault::Incomplete},
    {X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE, CertificateFault::Incomplete},
    {X509_V_ERR_CERT_UNTRUSTED, CertificateFault::UnknownIssuer},
    {X509_V_ERR_INVALID_PURPOSE, CertificateFault::WrongUsage},
    {X509_V_ERR_INVALID_CA, CertificateFault::WrongIssuer},
    {X509_V_ERR_PATH_LENGTH_EXCEEDED, CertificateFault::WrongIssuer},
    {X509_V_ERR_KEYUSAGE_NO_CERTSIGN, CertificateFault::WrongIssuer},
    {X509_V_ERR_PERMITTED_VIOLATION, CertificateFault::WrongIssuer},
    {X509_V_ERR_EXCLUDED_VIOLATION, CertificateFault::WrongIssuer},
    {X509_V_ERR_CERT_SIGNATURE_FAILURE, CertificateFault::BadSignature},
    {X509_V_ERR_CERT_REVOKED, CertificateFault::Revoked},
    {X509_V_ERR_UNABLE_TO_GET_CRL, CertificateFault::RevocationUnknown},
};

CertificateFault FaultOf(int error) {
  const auto* const found = std::find_if(std::begin(kFaults), std::end(kFaults),
                                         [error](const auto& row) { return row.error == error; });
  return found != std::end(kFaults) ? found->fault : CertificateFault::Refused;
}

X509Store TrustedRoots(const CertificateTrust& trust) {
  X509Store store(X509_STORE_new());
  if (trust.onlyRoot.empty()) {
    X509_STORE_set_default_paths(store.get());
  } else if (const auto root = FromDer(trust.onlyRoot)) {
    X509_STORE_add_cert(store.get(), root.get());
  }
  if (trust.revocation) X509_STORE_set_flags(store.get(), X509_V_FLAG_CRL_CHECK);
  return store;
}

class OpenSslLibrary final : public TlsLibrary {
 public:
  OpenSslLibrary() : context_(SSL_CTX_new(TLS_client_method())) {
    SSL_CTX_set_min_proto_version(context_.get(), TLS1_2_VERSION);
    // A certificate of a second handshake would be nobody's to judge.
    SSL_CTX_set_options(context_.get(), SSL_OP_NO_RENEGOTIATION);
    SSL_CTX_set_mode(context_.get(), SSL_MODE_RELEASE_BUFFERS);
    // The certificate is judged behind the handshake, as with the other system.
    SSL_CTX_set_verify(context_.get(), SSL_VERIFY_NONE, nullptr);
  }

  std::unique_ptr<TlsSession> MakeSession(const TlsSettings& settings) override {
    return std::make_unique<OpenSslSession>(context_.get(), settings);
  }

  ChainVerdict CheckChain(const std::vector<std::string>& chain,
                          const CertificateTrust& trust) override {
    ChainVerdict verdict;
    X509Stack others(sk_X509_new_null());
    X509Pointer own;
    for (const auto& der : chain) {
      auto certificate = FromDer(der);
      if (!certificate) {
        verdict.fault = CertificateFault::Unreadable;
        return verdict;
      }
      if (!own) {
        own = std::move(certificate);
      } else {
        sk_X509_push(others.get(), certificate.release());
      }
    }
    const auto store = TrustedRoots(trust);
    const Verification check(X509_STORE_CTX_new());
    X509_STORE_CTX_init(check.get(), store.get(), own.get(), others.get());
    X509_STORE_CTX_set_default(check.get(), "ssl_server");
    const bool good = X509_verify_cert(check.get()) == 1;
    Tell(check.get(), good, verdict);
    ERR_clear_error();
    return verdict;
  }

 private:
  static void Tell(X509_STORE_CTX* check, bool good, ChainVerdict& verdict) {
    const int error = X509_STORE_CTX_get_error(check);
    const X509Stack path(X509_STORE_CTX_get1_chain(check));
    const int count = path ? sk_X509_num(path.get()) : 0;
    verdict.path.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) verdict.path.push_back(Der(sk_X509_value(path.get(), i)));
    verdict.fault = FaultOf(error);
    if (good) return;
    if (verdict.fault == CertificateFault::None) verdict.fault = CertificateFault::Refused;
    verdict.place = static_cast<std::size_t>(std::max(X509_STORE_CTX_get_error_depth(check), 0));
    verdict.detail = X509_verify_cert_error_string(error);
  }

  SslContext context_;
};

}  // namespace

std::unique_ptr<TlsLibrary> MakeTlsLibrary() {
  return std::make_unique<OpenSslLibrary>();
}

}  // namespace quillon
