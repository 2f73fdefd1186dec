// TLS with the system's own Schannel, through its security interface.
#define SECURITY_WIN32
#define SCHANNEL_USE_BLACKLISTS
// clang-format off
// Each of these needs those before it.
#include <windows.h>
#include <subauth.h>
#include <schannel.h>
#include <security.h>
#include <wincrypt.h>
// clang-format on
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/HexDigit.h"
#include "platform/Platform.h"
#include "platform/win32/WideText.h"
#include "platform/win32/Wine.h"
#include "ports/Tls.h"

namespace quillon {
namespace {

// Everything is checked here and in net/, nothing by the system behind our back.
constexpr DWORD kCredentialFlags = SCH_CRED_MANUAL_CRED_VALIDATION | SCH_CRED_NO_DEFAULT_CREDS |
                                   SCH_CRED_NO_SERVERNAME_CHECK | SCH_USE_STRONG_CRYPTO;
constexpr DWORD kContextFlags = ISC_REQ_SEQUENCE_DETECT | ISC_REQ_REPLAY_DETECT |
                                ISC_REQ_CONFIDENTIALITY | ISC_REQ_EXTENDED_ERROR |
                                ISC_REQ_ALLOCATE_MEMORY | ISC_REQ_STREAM |
                                ISC_REQ_MANUAL_CRED_VALIDATION | ISC_REQ_USE_SUPPLIED_CREDS;
constexpr DWORD kOldProtocols =
    SP_PROT_SSL2_CLIENT | SP_PROT_SSL3_CLIENT | SP_PROT_TLS1_0_CLIENT | SP_PROT_TLS1_1_CLIENT;
constexpr unsigned kAlertRecord = 21;

std::string HexNumber(DWORD number) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%08lx", number);
  return text.data();
}

unsigned long Size(std::string_view bytes) {
  return static_cast<unsigned long>(bytes.size());
}

struct StatusRow {
  SECURITY_STATUS status;
  const char* text;
};

constexpr StatusRow kStatusTexts[] = {
    {SEC_E_INTERNAL_ERROR, "the handshake failed"},
    {SEC_E_ILLEGAL_MESSAGE, "the server sent a message out of order"},
    {SEC_E_ALGORITHM_MISMATCH, "no TLS version or cipher in common"},
    {SEC_E_UNSUPPORTED_FUNCTION, "no TLS version in common"},
    {SEC_E_DECRYPT_FAILURE, "a record cannot be decrypted"},
    {SEC_E_MESSAGE_ALTERED, "a record was changed on the way"},
    {SEC_E_INVALID_TOKEN, "the server sent something that is no TLS message"},
    {SEC_E_NO_AUTHENTICATING_AUTHORITY, "no version of TLS is enabled on this machine"},
    {SEC_E_SECPKG_NOT_FOUND, "this machine has no TLS"},
};

std::string StatusText(SECURITY_STATUS status) {
  const auto* const found =
      std::find_if(std::begin(kStatusTexts), std::end(kStatusTexts),
                   [status](const auto& row) { return row.status == status; });
  const std::string text = found != std::end(kStatusTexts) ? found->text : "TLS failed";
  return text + " (" + HexNumber(static_cast<DWORD>(status)) + ")";
}

struct CertificateRelease {
  void operator()(const CERT_CONTEXT* certificate) const {
    ::CertFreeCertificateContext(certificate);
  }
};
using CertificatePointer = std::unique_ptr<const CERT_CONTEXT, CertificateRelease>;

struct StoreRelease {
  void operator()(void* store) const { ::CertCloseStore(store, 0); }
};
using StorePointer = std::unique_ptr<void, StoreRelease>;

// The bytes of 40 hexadecimal digits, which people copy with blanks in between; empty for anything
// else.
std::string ThumbprintOf(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (c == ' ' || c == ':') continue;
    if (HexDigit(c) < 0) return {};
    digits += c;
  }
  constexpr std::size_t kSha1Digits = 40;
  if (digits.size() != kSha1Digits) return {};
  std::string bytes;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    bytes += static_cast<char>(HexDigit(digits[at]) * 16 + HexDigit(digits[at + 1]));
  }
  return bytes;
}

bool HasKey(const CERT_CONTEXT& certificate) {
  DWORD size = 0;
  return ::CertGetCertificateContextProperty(&certificate, CERT_KEY_PROV_INFO_PROP_ID, nullptr,
                                             &size) != FALSE;
}

// Null when there is none with a key.
CertificatePointer FindClientCertificate(const std::string& wanted) {
  const StorePointer store(
      ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0,
                      CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_READONLY_FLAG, L"MY"));
  if (!store) return nullptr;
  auto thumbprint = ThumbprintOf(wanted);
  const auto subject = WideFromUtf8(wanted);
  CRYPT_HASH_BLOB hash{Size(thumbprint), reinterpret_cast<BYTE*>(thumbprint.data())};
  const bool byHash = !thumbprint.empty();
  const CERT_CONTEXT* found = nullptr;
  do {
    // Frees the one before.
    found = ::CertFindCertificateInStore(
        store.get(), X509_ASN_ENCODING, 0, byHash ? CERT_FIND_SHA1_HASH : CERT_FIND_SUBJECT_STR_W,
        byHash ? static_cast<const void*>(&hash) : subject.c_str(), found);
  } while (found != nullptr && !HasKey(*found));
  return CertificatePointer(found);
}

class TlsCredential {
 public:
  // `own` may be null.
  explicit TlsCredential(const CERT_CONTEXT* own) : own_(own), status_(AcquireNew()) {
    // Systems before Windows 10 1809 do not know the newer record.
    if (status_ != SEC_E_OK) status_ = AcquireOld();
  }
  ~TlsCredential() {
    if (status_ == SEC_E_OK) ::FreeCredentialsHandle(&handle_);
  }
  TlsCredential(const TlsCredential&) = delete;
  TlsCredential& operator=(const TlsCredential&) = delete;

  SECURITY_STATUS Status() const noexcept { return status_; }
  CredHandle* Handle() noexcept { return &handle_; }

 private:
  SECURITY_STATUS Acquire(void* record) {
    std::wstring package = UNISP_NAME_W;
    TimeStamp expiry{};
    return ::AcquireCredentialsHandleW(nullptr, package.data(), SECPKG_CRED_OUTBOUND, nullptr,
                                       record, nullptr, nullptr, &handle_, &expiry);
  }

  // Leaves out what is old, so that each system offers what it has.
  SECURITY_STATUS AcquireNew() {
    // Wine takes the newer record without obeying its limits.
    if (IsWine()) return SEC_E_UNKNOWN_CREDENTIALS;
    TLS_PARAMETERS parameters{};
    parameters.grbitDisabledProtocols = kOldProtocols;
    SCH_CREDENTIALS record{};
    record.dwVersion = SCH_CREDENTIALS_VERSION;
    record.dwFlags = kCredentialFlags;
    record.cCreds = own_ != nullptr ? 1 : 0;
    record.paCred = own_ != nullptr ? &own_ : nullptr;
    record.cTlsParameters = 1;
    record.pTlsParameters = &parameters;
    return Acquire(&record);
  }

  // Names what may be used; these systems have nothing above TLS 1.2 to be missed.
  SECURITY_STATUS AcquireOld() {
    SCHANNEL_CRED record{};
    record.dwVersion = SCHANNEL_CRED_VERSION;
    record.dwFlags = kCredentialFlags;
    record.cCreds = own_ != nullptr ? 1 : 0;
    record.paCred = own_ != nullptr ? &own_ : nullptr;
    record.grbitEnabledProtocols = SP_PROT_TLS1_2_CLIENT;
    return Acquire(&record);
  }

  const CERT_CONTEXT* own_;
  CredHandle handle_{};
  SECURITY_STATUS status_;
};

class SchannelSession final : public TlsSession {
 public:
  explicit SchannelSession(const TlsSettings& settings)
      : serverName_(WideFromUtf8(settings.serverName)) {
    if (settings.clientCertificate.empty()) return;
    own_ = FindClientCertificate(settings.clientCertificate);
    if (!own_) lacks_ = settings.clientCertificate;
  }
  ~SchannelSession() override {
    if (hasContext_) ::DeleteSecurityContext(&context_);
  }

  TlsStatus Handshake(ByteQueue& input, std::string& output) override;
  TlsStatus Open(ByteQueue& input, std::string& text, std::string& output) override;
  TlsStatus Seal(std::string_view text, std::string& output) override;
  std::size_t MaxText() const override { return sizes_.cbMaximumMessage; }
  void Shutdown(std::string& output) override;
  TlsFacts Facts() override;
  std::string UniqueBinding() override;
  const std::string& Reason() const override { return reason_; }

 private:
  TlsStatus Fail(std::string reason) {
    reason_ = std::move(reason);
    return TlsStatus::Failed;
  }
  TlsStatus Finish();
  TlsStatus AfterHandshake(ByteQueue& input, std::string& output);
  SECURITY_STATUS Step(ByteQueue* input, std::string& output);

  std::wstring serverName_;
  CertificatePointer own_;
  std::string lacks_;  // the certificate of ours that there is not
  std::optional<TlsCredential> credential_;
  CtxtHandle context_{};
  bool hasContext_ = false;
  bool askedForCertificate_ = false;
  bool inAfterHandshake_ = false;  // what comes next is not text
  int version_ = 0;
  SecPkgContext_ConnectionInfo connection_{};
  SecPkgContext_StreamSizes sizes_{};
  std::string reason_;
};

// One call of the system with what has come; takes off what it used.
SECURITY_STATUS SchannelSession::Step(ByteQueue* input, std::string& output) {
  const bool first = !hasContext_;
  const bool fed = !first && input != nullptr;
  std::array<SecBuffer, 2> in{};
  if (fed) in[0] = {Size(input->View()), SECBUFFER_TOKEN, input->Data()};
  SecBufferDesc inList{SECBUFFER_VERSION, static_cast<unsigned long>(in.size()), in.data()};
  std::array<SecBuffer, 2> out{{{0, SECBUFFER_TOKEN, nullptr}, {0, SECBUFFER_ALERT, nullptr}}};
  SecBufferDesc outList{SECBUFFER_VERSION, static_cast<unsigned long>(out.size()), out.data()};
  DWORD attributes = 0;
  TimeStamp expiry{};
  const auto status = ::InitializeSecurityContextW(
      credential_->Handle(), first ? nullptr : &context_,
      serverName_.empty() ? nullptr : serverName_.data(), kContextFlags, 0, 0,
      fed ? &inList : nullptr, 0, first ? &context_ : nullptr, &outList, &attributes, &expiry);
  if (status == SEC_E_OK || status == SEC_I_CONTINUE_NEEDED) hasContext_ = true;
  for (const auto& buffer : out) {
    if (buffer.pvBuffer == nullptr) continue;
    output.append(static_cast<const char*>(buffer.pvBuffer), buffer.cbBuffer);
    ::FreeContextBuffer(buffer.pvBuffer);
  }
  // These two want the same bytes again.
  if (fed && status != SEC_E_INCOMPLETE_MESSAGE && status != SEC_I_INCOMPLETE_CREDENTIALS) {
    const std::size_t extra = in[1].BufferType == SECBUFFER_EXTRA ? in[1].cbBuffer : 0;
    input->Drop(input->Size() - extra);
  }
  return status;
}

TlsStatus SchannelSession::Handshake(ByteQueue& input, std::string& output) {
  if (!lacks_.empty()) {
    return Fail("the user's store of certificates has none with a key for \"" + lacks_ + "\"");
  }
  if (!credential_) credential_.emplace(own_.get());
  if (credential_->Status() != SEC_E_OK) return Fail(StatusText(credential_->Status()));
  for (;;) {
    if (hasContext_ && input.Size() == 0) return TlsStatus::MoreInput;
    const auto status = Step(&input, output);
    switch (status) {
      case SEC_E_OK:
        return Finish();
      case SEC_I_CONTINUE_NEEDED:
        break;
      case SEC_E_INCOMPLETE_MESSAGE:
        return TlsStatus::MoreInput;
      case SEC_I_INCOMPLETE_CREDENTIALS:
        // The server would like a certificate of ours: the same again says that there is none.
        if (askedForCertificate_) return Fail("the server insists on a certificate of the client");
        askedForCertificate_ = true;
        break;
      case SEC_I_CONTEXT_EXPIRED:
        return TlsStatus::Closed;
      default:
        return Fail(StatusText(status));
    }
  }
}

TlsStatus SchannelSession::Finish() {
  auto status = ::QueryContextAttributesW(&context_, SECPKG_ATTR_STREAM_SIZES, &sizes_);
  if (status == SEC_E_OK) {
    status = ::QueryContextAttributesW(&context_, SECPKG_ATTR_CONNECTION_INFO, &connection_);
  }
  if (status != SEC_E_OK) return Fail(StatusText(status));
  const auto protocol = connection_.dwProtocol;
  if ((protocol & SP_PROT_TLS1_3_CLIENT) != 0) {
    version_ = kTls13;
  } else if ((protocol & SP_PROT_TLS1_2_CLIENT) != 0) {
    version_ = kTls12;
  }
  return TlsStatus::Ok;
}

TlsStatus SchannelSession::Open(ByteQueue& input, std::string& text, std::string& output) {
  if (input.Size() == 0) return TlsStatus::MoreInput;
  if (inAfterHandshake_) return AfterHandshake(input, output);
  const auto type = static_cast<unsigned char>(input.View().front());
  std::array<SecBuffer, 4> buffers{};
  buffers[0] = {Size(input.View()), SECBUFFER_DATA, input.Data()};
  SecBufferDesc list{SECBUFFER_VERSION, static_cast<unsigned long>(buffers.size()), buffers.data()};
  const auto status = ::DecryptMessage(&context_, &list, 0, nullptr);
  if (status == SEC_E_INCOMPLETE_MESSAGE) return TlsStatus::MoreInput;
  if (status != SEC_E_OK && status != SEC_I_RENEGOTIATE && status != SEC_I_CONTEXT_EXPIRED) {
    return Fail(StatusText(status));
  }
  std::size_t taken = 0;
  std::size_t extra = 0;
  for (const auto& buffer : buffers) {
    if (buffer.BufferType == SECBUFFER_EXTRA) extra = buffer.cbBuffer;
    if (buffer.BufferType != SECBUFFER_DATA || buffer.cbBuffer == 0) continue;
    text.append(static_cast<const char*>(buffer.pvBuffer), buffer.cbBuffer);
    taken += buffer.cbBuffer;
  }
  input.Drop(input.Size() - extra);
  if (status == SEC_I_CONTEXT_EXPIRED) return TlsStatus::Closed;
  if (status == SEC_I_RENEGOTIATE) return AfterHandshake(input, output);
  // In Wine the peer's end is an alert that decrypts to nothing, without an error.
  return taken == 0 && type == kAlertRecord ? TlsStatus::Closed : TlsStatus::Ok;
}

// In TLS 1.3 a ticket or a new key, which the system wants to see. In TLS 1.2 the server asks for
// another handshake, which may be ignored (RFC 5246, section 7.4.1.1): its certificate would be
// nobody's to judge.
TlsStatus SchannelSession::AfterHandshake(ByteQueue& input, std::string& output) {
  if (version_ < kTls13 || input.Size() == 0) return TlsStatus::Ok;
  inAfterHandshake_ = true;
  while (input.Size() > 0) {
    const auto status = Step(&input, output);
    inAfterHandshake_ = status != SEC_E_OK;
    if (!inAfterHandshake_) return TlsStatus::Ok;
    if (status == SEC_E_INCOMPLETE_MESSAGE) break;
    if (status != SEC_I_CONTINUE_NEEDED) return Fail(StatusText(status));
  }
  return TlsStatus::MoreInput;
}

TlsStatus SchannelSession::Seal(std::string_view text, std::string& output) {
  const auto begin = output.size();
  output.resize(begin + sizes_.cbHeader + text.size() + sizes_.cbTrailer);
  char* const header = output.data() + begin;
  char* const data = header + sizes_.cbHeader;
  std::memcpy(data, text.data(), text.size());
  std::array<SecBuffer, 4> buffers{
      {{sizes_.cbHeader, SECBUFFER_STREAM_HEADER, header},
       {Size(text), SECBUFFER_DATA, data},
       {sizes_.cbTrailer, SECBUFFER_STREAM_TRAILER, data + text.size()},
       {0, SECBUFFER_EMPTY, nullptr}}};
  SecBufferDesc list{SECBUFFER_VERSION, static_cast<unsigned long>(buffers.size()), buffers.data()};
  const auto status = ::EncryptMessage(&context_, 0, &list, 0);
  if (status != SEC_E_OK) {
    output.resize(begin);
    return Fail(StatusText(status));
  }
  output.resize(begin + buffers[0].cbBuffer + buffers[1].cbBuffer + buffers[2].cbBuffer);
  return TlsStatus::Ok;
}

void SchannelSession::Shutdown(std::string& output) {
  if (!hasContext_) return;
  DWORD kind = SCHANNEL_SHUTDOWN;
  SecBuffer token{sizeof kind, SECBUFFER_TOKEN, &kind};
  SecBufferDesc list{SECBUFFER_VERSION, 1, &token};
  if (::ApplyControlToken(&context_, &list) == SEC_E_OK) Step(nullptr, output);
}

std::string DerOf(const CERT_CONTEXT& certificate) {
  return {reinterpret_cast<const char*>(certificate.pbCertEncoded), certificate.cbCertEncoded};
}

TlsFacts SchannelSession::Facts() {
  TlsFacts facts;
  facts.version = version_;
  facts.bits = static_cast<int>(connection_.dwCipherStrength);
  SecPkgContext_CipherInfo cipher{};
  cipher.dwVersion = SECPKGCONTEXT_CIPHERINFO_V1;
  if (::QueryContextAttributesW(&context_, SECPKG_ATTR_CIPHER_INFO, &cipher) == SEC_E_OK) {
    const auto* const end =
        std::find(std::begin(cipher.szCipherSuite), std::end(cipher.szCipherSuite), L'\0');
    facts.cipher = Utf8FromWide({std::begin(cipher.szCipherSuite), end});
  }
  const CERT_CONTEXT* shown = nullptr;
  if (::QueryContextAttributesW(&context_, SECPKG_ATTR_REMOTE_CERT_CONTEXT, &shown) != SEC_E_OK ||
      shown == nullptr) {
    return facts;
  }
  const CertificatePointer own(shown);
  facts.chain.push_back(DerOf(*own));
  const CERT_CONTEXT* other = nullptr;
  while ((other = ::CertEnumCertificatesInStore(own->hCertStore, other)) != nullptr) {
    auto der = DerOf(*other);
    if (der != facts.chain.front()) facts.chain.push_back(std::move(der));
  }
  return facts;
}

std::string SchannelSession::UniqueBinding() {
  if (version_ != kTls12) return {};
  SecPkgContext_Bindings found{};
  const auto status = ::QueryContextAttributesW(&context_, SECPKG_ATTR_UNIQUE_BINDINGS, &found);
  if (status != SEC_E_OK || found.Bindings == nullptr) return {};
  const auto* const bytes = reinterpret_cast<const char*>(found.Bindings);
  std::string_view data(bytes + found.Bindings->dwApplicationDataOffset,
                        found.Bindings->cbApplicationDataLength);
  // The name stands in front of the value.
  constexpr std::string_view kName = "tls-unique:";
  if (data.starts_with(kName)) data.remove_prefix(kName.size());
  std::string binding(data);
  ::FreeContextBuffer(found.Bindings);
  return binding;
}

struct EngineRelease {
  void operator()(void* engine) const { ::CertFreeCertificateChainEngine(engine); }
};
struct ChainRelease {
  void operator()(const CERT_CHAIN_CONTEXT* chain) const { ::CertFreeCertificateChain(chain); }
};
using EnginePointer = std::unique_ptr<std::remove_pointer_t<HCERTCHAINENGINE>, EngineRelease>;
using ChainPointer = std::unique_ptr<const CERT_CHAIN_CONTEXT, ChainRelease>;

StorePointer MakeStore() {
  return StorePointer(
      ::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, CERT_STORE_CREATE_NEW_FLAG, nullptr));
}

CertificatePointer AddTo(void* store, std::string_view der) {
  const CERT_CONTEXT* added = nullptr;
  ::CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING,
                                     reinterpret_cast<const BYTE*>(der.data()), Size(der),
                                     CERT_STORE_ADD_ALWAYS, &added);
  return CertificatePointer(added);
}

// Trusts nothing but what is in the store.
EnginePointer MakeEngine(void* roots) {
  CERT_CHAIN_ENGINE_CONFIG config{};
  // The record of Windows 7, which this is compiled for; Wine refuses a longer one.
  config.cbSize = sizeof config;
  config.hExclusiveRoot = roots;
  HCERTCHAINENGINE engine = nullptr;
  ::CertCreateCertificateChainEngine(&config, &engine);
  return EnginePointer(engine);
}

struct TrustBit {
  DWORD bits;
  CertificateFault fault;
};

constexpr DWORD kNameConstraints =
    CERT_TRUST_INVALID_NAME_CONSTRAINTS | CERT_TRUST_HAS_NOT_SUPPORTED_NAME_CONSTRAINT |
    CERT_TRUST_HAS_NOT_DEFINED_NAME_CONSTRAINT | CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT |
    CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT;
constexpr DWORD kRevocationUnknown =
    CERT_TRUST_REVOCATION_STATUS_UNKNOWN | CERT_TRUST_IS_OFFLINE_REVOCATION;
constexpr DWORD kHasWeakSignature = 0x00100000;  // the headers are older than this one

// The worst first.
constexpr TrustBit kTrustBits[] = {
    {CERT_TRUST_IS_NOT_SIGNATURE_VALID, CertificateFault::BadSignature},
    {CERT_TRUST_IS_REVOKED, CertificateFault::Revoked},
    {CERT_TRUST_IS_UNTRUSTED_ROOT, CertificateFault::UnknownIssuer},
    {CERT_TRUST_IS_PARTIAL_CHAIN, CertificateFault::Incomplete},
    {CERT_TRUST_IS_NOT_TIME_VALID, CertificateFault::Expired},
    {CERT_TRUST_INVALID_BASIC_CONSTRAINTS | kNameConstraints, CertificateFault::WrongIssuer},
    {CERT_TRUST_IS_NOT_VALID_FOR_USAGE, CertificateFault::WrongUsage},
    {kHasWeakSignature, CertificateFault::WeakSignature},
};

DWORD ErrorsOf(const CERT_CHAIN_ELEMENT& element, const CertificateTrust& trust) {
  const auto errors = element.TrustStatus.dwErrorStatus;
  return trust.revocation ? errors : errors & ~kRevocationUnknown;
}

// The fault that these bits stand for; nothing that is wrong stays without one.
CertificateFault FaultOfBits(DWORD errors) {
  if (errors == 0) return CertificateFault::None;
  for (const auto& row : kTrustBits) {
    if ((errors & row.bits) != 0) return row.fault;
  }
  return (errors & ~kRevocationUnknown) == 0 ? CertificateFault::RevocationUnknown
                                             : CertificateFault::Refused;
}

// What the system's own policy for servers says besides; the host name is compared elsewhere.
DWORD PolicyError(const CERT_CHAIN_CONTEXT* chain, const CertificateTrust& trust) {
  SSL_EXTRA_CERT_CHAIN_POLICY_PARA server{};
  server.cbSize = sizeof server;
  server.dwAuthType = AUTHTYPE_SERVER;
  CERT_CHAIN_POLICY_PARA parameters{};
  parameters.cbSize = sizeof parameters;
  parameters.pvExtraPolicyPara = &server;
  if (!trust.revocation) parameters.dwFlags = CERT_CHAIN_POLICY_IGNORE_ALL_REV_UNKNOWN_FLAGS;
  CERT_CHAIN_POLICY_STATUS status{};
  status.cbSize = sizeof status;
  if (::CertVerifyCertificateChainPolicy(CERT_CHAIN_POLICY_SSL, chain, &parameters, &status) == 0) {
    return ::GetLastError();
  }
  return status.dwError;
}

// Notes the path and where the fault is, and returns the certificate that has it, if it is one
// alone.
const CERT_CONTEXT* FindFault(const CERT_SIMPLE_CHAIN& chain, const CertificateTrust& trust,
                              ChainVerdict& verdict) {
  const CERT_CONTEXT* faulty = nullptr;
  verdict.path.reserve(chain.cElement);
  for (DWORD i = 0; i < chain.cElement; ++i) {
    const auto& element = *chain.rgpElement[i];
    verdict.path.push_back(DerOf(*element.pCertContext));
    if (faulty != nullptr || verdict.fault == CertificateFault::None) continue;
    if (FaultOfBits(ErrorsOf(element, trust)) != verdict.fault) continue;
    faulty = element.pCertContext;
    verdict.place = i;
  }
  return faulty;
}

// The policy alone is not to be trusted: in Wine it finds nothing wrong with chains that the bits
// refuse.
void JudgeChain(const CERT_CHAIN_CONTEXT& chain, const CertificateTrust& trust,
                ChainVerdict& verdict) {
  auto errors = chain.TrustStatus.dwErrorStatus;
  if (!trust.revocation) errors &= ~kRevocationUnknown;
  verdict.fault = FaultOfBits(errors);
  verdict.detail = HexNumber(errors);
  if (chain.cChain == 0) {
    verdict.fault = CertificateFault::Refused;
    return;
  }
  const auto& simple = *chain.rgpChain[0];
  const auto* const faulty = FindFault(simple, trust, verdict);
  if (verdict.fault == CertificateFault::UnknownIssuer && simple.cElement == 1) {
    verdict.fault = CertificateFault::SelfSigned;
  }
  if (verdict.fault == CertificateFault::Expired && faulty != nullptr &&
      ::CertVerifyTimeValidity(nullptr, faulty->pCertInfo) < 0) {
    verdict.fault = CertificateFault::NotYetValid;
  }
  if (verdict.fault != CertificateFault::None) return;
  const auto policy = PolicyError(&chain, trust);
  if (policy == 0) return;
  verdict.fault = CertificateFault::Refused;
  verdict.detail = HexNumber(policy);
}

class SchannelLibrary final : public TlsLibrary {
 public:
  std::unique_ptr<TlsSession> MakeSession(const TlsSettings& settings) override {
    return std::make_unique<SchannelSession>(settings);
  }

  ChainVerdict CheckChain(const std::vector<std::string>& chain,
                          const CertificateTrust& trust) override {
    ChainVerdict verdict;
    const auto others = MakeStore();
    CertificatePointer own;
    for (const auto& der : chain) {
      auto added = AddTo(others.get(), der);
      if (!added) {
        verdict.fault = CertificateFault::Unreadable;
        return verdict;
      }
      if (!own) own = std::move(added);
    }
    StorePointer roots;
    EnginePointer engine;
    if (!trust.onlyRoot.empty()) {
      roots = MakeStore();
      AddTo(roots.get(), trust.onlyRoot);
      engine = MakeEngine(roots.get());
      if (!engine) return SystemRefuses();
    }
    const auto built = Build(engine.get(), own.get(), others.get(), trust);
    if (!built) return SystemRefuses();
    JudgeChain(*built, trust, verdict);
    return verdict;
  }

 private:
  static ChainVerdict SystemRefuses() {
    ChainVerdict verdict;
    verdict.detail = HexNumber(::GetLastError());
    return verdict;
  }

  static ChainPointer Build(HCERTCHAINENGINE engine, const CERT_CONTEXT* own, void* others,
                            const CertificateTrust& trust) {
    std::string usage = szOID_PKIX_KP_SERVER_AUTH;
    char* const usages[] = {usage.data()};
    CERT_CHAIN_PARA parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.RequestedUsage.dwType = USAGE_MATCH_TYPE_OR;
    parameters.RequestedUsage.Usage.cUsageIdentifier = 1;
    parameters.RequestedUsage.Usage.rgpszUsageIdentifier = const_cast<char**>(usages);
    const DWORD flags = trust.revocation ? CERT_CHAIN_REVOCATION_CHECK_CHAIN_EXCLUDE_ROOT : 0;
    const CERT_CHAIN_CONTEXT* chain = nullptr;
    if (::CertGetCertificateChain(engine, own, nullptr, others, &parameters, flags, nullptr,
                                  &chain) == 0) {
      return nullptr;
    }
    return ChainPointer(chain);
  }
};

}  // namespace

std::unique_ptr<TlsLibrary> MakeTlsLibrary() {
  return std::make_unique<SchannelLibrary>();
}

}  // namespace quillon
