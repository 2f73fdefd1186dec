#include "net/SecureConnect.h"

#include <system_error>
#include <utility>

#include "net/HostName.h"

namespace quillon {

SecureConnect::SecureConnect(EventLoop& loop, TlsLibrary& library, const Crypto& crypto,
                             BackgroundRunner runInBackground)
    : loop_(loop),
      library_(library),
      crypto_(crypto),
      runInBackground_(std::move(runInBackground)) {}

void SecureConnect::Start(std::unique_ptr<ByteStream> plain, CertificateDemand demand,
                          const std::string& clientCertificate, Done done) {
  Cancel();
  demand_ = std::move(demand);
  done_ = std::move(done);
  stream_ = std::make_unique<SecuredStream>(
      loop_, std::move(plain),
      library_.MakeSession({ServerNameFor(demand_.host), clientCertificate}));
  stream_->Begin([this](bool secured) { OnHandshake(secured); });
}

void SecureConnect::Cancel() {
  done_ = nullptr;
  check_.reset();
  stream_.reset();
}

void SecureConnect::OnHandshake(bool secured) {
  if (!secured) {
    Result result;
    result.outcome = Outcome::HandshakeFailed;
    result.reason = stream_->Reason();
    result.facts = stream_->Facts();
    return Finish(std::move(result));
  }
  const auto verdict = std::make_shared<CertificateVerdict>();
  try {
    check_.emplace(
        loop_, runInBackground_,
        [verdict, &library = library_, &crypto = crypto_, chain = stream_->Facts().chain,
         demand = demand_] { *verdict = CheckCertificate(library, crypto, chain, demand); },
        [this, verdict] { OnVerdict(*verdict); });
  } catch (const std::system_error&) {
    OnVerdict({CertificateFault::Refused, "The system has no thread to check a certificate on."});
  }
}

void SecureConnect::OnVerdict(const CertificateVerdict& verdict) {
  Result result;
  result.facts = stream_->Facts();
  if (verdict.Good()) {
    result.uniqueBinding = stream_->Session().UniqueBinding();
    stream_->Accept();
    result.stream = std::move(stream_);
  } else {
    result.outcome = Outcome::CertificateRefused;
    result.reason = verdict.text;
  }
  Finish(std::move(result));
}

void SecureConnect::Finish(Result result) {
  const auto done = std::exchange(done_, nullptr);
  Cancel();
  done(std::move(result));
}

std::string TlsVersionText(int version) {
  if (version == 0) return "TLS";
  return "TLS 1." + std::to_string((version & 0xFF) - 1);
}

}  // namespace quillon
