#include "net/CertificateCheck.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iterator>

#include "core/HexDigit.h"
#include "core/Text.h"
#include "net/Certificate.h"
#include "net/HostName.h"

namespace quillon {

namespace {

constexpr std::size_t kDigestSize = 32;
constexpr int kMinRsaBits = 2048;
constexpr int kMinCurveBits = 224;
constexpr std::string_view kKeyMark = "key:";

struct FaultRow {
  CertificateFault fault;
  const char* wrong;   // behind "The certificate of "HOST" "
  const char* remedy;  // a sentence
};

constexpr const char* kInstallChain =
    "Install the certificates in between on the server, so that it sends the whole chain; if the "
    "issuer is one of your own, install its root certificate on this machine, or pin this "
    "certificate.";
constexpr const char* kRenew = "Renew the certificate on the server.";
constexpr const char* kTrustIssuer =
    "Install the issuer's root certificate on this machine, or pin this certificate.";
constexpr const char* kReplace = "Ask for a new certificate, or pin this one.";

constexpr FaultRow kFaultRows[] = {
    {CertificateFault::Missing, "was not shown", "The server has to be given a certificate."},
    {CertificateFault::Unreadable, "cannot be read", "The server has to be given another."},
    {CertificateFault::WrongPin, "is not the one that is pinned",
     "If the server has been given a new one, compare it there and pin that."},
    {CertificateFault::SelfSigned, "is signed by itself and not trusted on this machine",
     "If it is the right one, pin it."},
    {CertificateFault::UnknownIssuer, "comes from an issuer that this machine does not trust",
     kTrustIssuer},
    {CertificateFault::Incomplete,
     "has an issuer that is not known here, and the server does not send the issuer's certificate",
     kInstallChain},
    {CertificateFault::Expired, "has expired", kRenew},
    {CertificateFault::NotYetValid, "is not valid yet",
     "Look whether the clock of this machine is right."},
    {CertificateFault::WrongHost, "is for another host",
     "Connect to a name that it is for, or ask for a certificate for this one."},
    {CertificateFault::WrongUsage, "is not meant for a server", kReplace},
    {CertificateFault::WrongIssuer, "was issued by somebody who may not issue it", kReplace},
    {CertificateFault::BadSignature, "has a wrong signature",
     "Somebody may stand between this machine and the server; ask whoever runs the network."},
    {CertificateFault::WeakKey, "has a key that is too short to be safe", kReplace},
    {CertificateFault::WeakSignature, "has a signature that can be forged (MD5 or SHA-1)",
     kReplace},
    {CertificateFault::Revoked, "has been taken back by its issuer", kRenew},
    {CertificateFault::RevocationUnknown, "may have been taken back, which cannot be found out",
     "Look whether this machine reaches the issuer's web server, or switch the question off."},
    {CertificateFault::Refused, "is refused by this system", kReplace},
};

const FaultRow& RowOf(CertificateFault fault) {
  const auto* const found = std::find_if(std::begin(kFaultRows), std::end(kFaultRows),
                                         [fault](const auto& row) { return row.fault == fault; });
  return found != std::end(kFaultRows) ? *found : *std::rbegin(kFaultRows);
}

std::string Hex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

// "2026-03-31", of seconds since 1970.
std::string DayText(std::int64_t seconds) {
  // The inverse of counting days in years that begin in March.
  const std::int64_t days = (seconds >= 0 ? seconds : seconds - 86399) / 86400 + 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shifted = (5 * dayOfYear + 2) / 153;
  const int day = static_cast<int>(dayOfYear - (153 * shifted + 2) / 5 + 1);
  const int month = static_cast<int>(shifted < 10 ? shifted + 3 : shifted - 9);
  const int year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", year, month, day);
  return text.data();
}

std::string Quoted(std::string_view text) {
  return '"' + std::string(text) + '"';
}

// What stands in a certificate for people is anybody's choice, so it is quoted, and names that are
// none are left out.
std::string NamesText(const Certificate& certificate) {
  constexpr std::size_t kMostNames = 5;
  std::vector<std::string> names;
  for (const auto& name : certificate.dnsNames) {
    const bool plain = name.size() <= 253 && std::all_of(name.begin(), name.end(), [](char c) {
                         return c > ' ' && c < 0x7F && c != '"';
                       });
    if (plain) names.push_back(name);
  }
  for (const auto& address : certificate.addresses) {
    if (address.size() != 4) continue;
    std::vector<std::string> parts;
    parts.reserve(address.size());
    for (const char c : address) parts.push_back(std::to_string(static_cast<unsigned char>(c)));
    names.push_back(Join(parts, "."));
  }
  if (names.empty()) return "no host by name";
  const bool more = names.size() > kMostNames;
  if (more) names.resize(kMostNames);
  return Join(names, ", ") + (more ? " and others" : "");
}

std::string PartiesText(const Certificate& certificate) {
  return "It is for " + NamesText(certificate) + " (" + Quoted(certificate.subject) +
         "), was issued by " + Quoted(certificate.issuer) + " and is valid from " +
         DayText(certificate.notBefore) + " to " + DayText(certificate.notAfter) + ".";
}

class Judge {
 public:
  Judge(TlsLibrary& library, const Crypto& crypto, const std::vector<std::string>& chain,
        const CertificateDemand& demand)
      : library_(library), crypto_(crypto), chain_(chain), demand_(demand) {}

  CertificateVerdict Verdict() {
    if (chain_.empty()) return Refuse(CertificateFault::Missing);
    own_ = ReadCertificate(chain_.front());
    if (!own_) return Refuse(CertificateFault::Unreadable);
    if (demand_.pin) return IsPinned() ? CertificateVerdict() : Refuse(CertificateFault::WrongPin);
    const auto system = library_.CheckChain(chain_, demand_.trust);
    place_ = system.place;
    detail_ = system.detail;
    if (system.fault != CertificateFault::None) return Refuse(system.fault);
    const auto weakness = Weakness(system.path);
    if (weakness != CertificateFault::None) return Refuse(weakness);
    place_ = 0;
    if (!MatchesHost(own_->dnsNames, own_->addresses, demand_.host)) {
      return Refuse(CertificateFault::WrongHost);
    }
    return {};
  }

 private:
  bool IsPinned() const {
    const auto& pin = *demand_.pin;
    return crypto_.Digest(HashAlgorithm::kSha256, pin.ofKey ? own_->publicKey : chain_.front()) ==
           pin.digest;
  }

  // A root is trusted because it is there, so its own signature says nothing.
  CertificateFault Weakness(const std::vector<std::string>& path) {
    if (path.empty()) return CertificateFault::Refused;
    for (place_ = 0; place_ < path.size(); ++place_) {
      const auto certificate = ReadCertificate(path[place_]);
      if (!certificate) return CertificateFault::Unreadable;
      const bool weakKey =
          (certificate->keyType == KeyType::Rsa && certificate->keyBits < kMinRsaBits) ||
          (certificate->keyType == KeyType::EllipticCurve && certificate->keyBits < kMinCurveBits);
      if (weakKey || certificate->keyType == KeyType::Other) return CertificateFault::WeakKey;
      const auto digest = certificate->signatureDigest;
      const bool weakSignature = digest == SignatureDigest::Md5 ||
                                 digest == SignatureDigest::Sha1 ||
                                 digest == SignatureDigest::Unknown;
      if (weakSignature && place_ + 1 < path.size()) return CertificateFault::WeakSignature;
    }
    return CertificateFault::None;
  }

  CertificateVerdict Refuse(CertificateFault fault) const {
    const auto& row = RowOf(fault);
    // The verdict on the chain as a whole names its first certificate too.
    const bool above = place_ > 0 && own_ && fault != CertificateFault::UnknownIssuer &&
                       fault != CertificateFault::Incomplete;
    std::string text = above ? "An issuer's certificate above that of " : "The certificate of ";
    text += Quoted(demand_.host) + " " + row.wrong;
    if (!detail_.empty() && fault == CertificateFault::Refused) text += ": " + detail_;
    text += ".";
    if (own_) text += " " + PartiesText(*own_);
    text += std::string(" ") + row.remedy;
    if (own_) text += " Its pin is " + CertificatePinText(crypto_, chain_.front()) + ".";
    return {fault, text};
  }

  TlsLibrary& library_;
  const Crypto& crypto_;
  const std::vector<std::string>& chain_;
  const CertificateDemand& demand_;
  std::optional<Certificate> own_;
  std::size_t place_ = 0;
  std::string detail_;
};

}  // namespace

std::optional<CertificatePin> ReadPin(std::string_view text) {
  CertificatePin pin;
  pin.ofKey = EqualsIgnoreCase(text.substr(0, kKeyMark.size()), kKeyMark);
  if (pin.ofKey) text.remove_prefix(kKeyMark.size());
  if (text.size() != 2 * kDigestSize) return std::nullopt;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = HexDigit(text[i]);
    const int low = HexDigit(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    pin.digest += static_cast<char>(high * 16 + low);
  }
  return pin;
}

CertificateVerdict CheckCertificate(TlsLibrary& library, const Crypto& crypto,
                                    const std::vector<std::string>& chain,
                                    const CertificateDemand& demand) {
  try {
    return Judge(library, crypto, chain, demand).Verdict();
  } catch (const std::exception& error) {
    return {CertificateFault::Refused, "The certificate of " + Quoted(demand.host) +
                                           " could not be checked: " + error.what() + "."};
  }
}

std::string CertificatePinText(const Crypto& crypto, std::string_view certificate) {
  return Hex(crypto.Digest(HashAlgorithm::kSha256, certificate));
}

std::string CertificatePartiesText(std::string_view certificate) {
  const auto own = ReadCertificate(certificate);
  return own ? PartiesText(*own) : std::string();
}

}  // namespace quillon
