#define SECURITY_WIN32
#include "platform/win32/SspiLogin.h"

// clang-format off
// The second needs the first.
#include <windows.h>
#include <security.h>
// clang-format on
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32/WideText.h"
#include "platform/win32/Wine.h"

namespace quillon {
namespace {

// What is signed behind the login needs a key of its own; the server shows who it is where the
// protocol that is negotiated lets it.
constexpr unsigned long kNegotiateFlags =
    ISC_REQ_MUTUAL_AUTH | ISC_REQ_INTEGRITY | ISC_REQ_SEQUENCE_DETECT | ISC_REQ_REPLAY_DETECT;
constexpr unsigned long kAllocate = ISC_REQ_ALLOCATE_MEMORY;
constexpr std::string_view kNtlmLogin("NTLMSSP\0\3\0\0\0", 12);  // how its last message begins
constexpr std::size_t kNtlmSignature = 16;                       // [MS-NLMP], 2.2.2.9

struct SspiStatusRow {
  SECURITY_STATUS status;
  const char* text;
};

constexpr SspiStatusRow kSspiStatusTexts[] = {
    {SEC_E_LOGON_DENIED, "name or password are not taken"},
    {SEC_E_NO_CREDENTIALS, "this account has nothing to log in with"},
    {SEC_E_UNKNOWN_CREDENTIALS, "this account has nothing to log in with"},
    {SEC_E_TARGET_UNKNOWN, "the domain does not know the server"},
    {SEC_E_WRONG_PRINCIPAL, "the server is not the one that the domain knows"},
    {SEC_E_NO_AUTHENTICATING_AUTHORITY, "no domain controller answers"},
    {SEC_E_TIME_SKEW, "the clocks of this machine and the domain differ too much"},
    {SEC_E_INVALID_TOKEN, "the server's message is malformed"},
    {SEC_E_MUTUAL_AUTH_FAILED, "the server does not show who it is"},
    {SEC_E_SECPKG_NOT_FOUND, "this machine has no such login"},
};

std::string SspiFailure(SECURITY_STATUS status) {
  const auto* const found =
      std::find_if(std::begin(kSspiStatusTexts), std::end(kSspiStatusTexts),
                   [status](const auto& row) { return row.status == status; });
  std::array<char, 16> number{};
  std::snprintf(number.data(), number.size(), "0x%08lx", static_cast<unsigned long>(status));
  const std::string text = found != std::end(kSspiStatusTexts) ? found->text : "it failed";
  return "The login that Windows makes: " + text + " (" + number.data() + ").";
}

// The interface writes to none of its names, and wants them writable.
std::wstring PackageName(SystemPackage package) {
  return package == SystemPackage::kNtlm ? L"NTLM" : L"Negotiate";
}

unsigned long SizeOf(std::string_view bytes) {
  return static_cast<unsigned long>(bytes.size());
}

SecBufferDesc ListOf(SecBuffer* first, std::size_t count) {
  return {SECBUFFER_VERSION, static_cast<unsigned long>(count), first};
}

// "DOMAIN\user" in its two parts; anything else is a user, with the domain inside or without one.
class Identity {
 public:
  explicit Identity(const SystemAccount& account)
      : user_(WideFromUtf8(account.loginName)), password_(WideFromUtf8(account.password)) {
    if (const auto slash = user_.find(L'\\'); slash != std::wstring::npos) {
      domain_ = user_.substr(0, slash);
      user_.erase(0, slash + 1);
    }
    record_.User = Letters(user_);
    record_.UserLength = static_cast<unsigned long>(user_.size());
    record_.Domain = Letters(domain_);
    record_.DomainLength = static_cast<unsigned long>(domain_.size());
    record_.Password = Letters(password_);
    record_.PasswordLength = static_cast<unsigned long>(password_.size());
    record_.Flags = SEC_WINNT_AUTH_IDENTITY_UNICODE;
  }
  ~Identity() { ::SecureZeroMemory(password_.data(), password_.size() * sizeof(wchar_t)); }
  Identity(const Identity&) = delete;
  Identity& operator=(const Identity&) = delete;

  SEC_WINNT_AUTH_IDENTITY_W* Record() { return &record_; }

 private:
  static unsigned short* Letters(std::wstring& text) {
    return reinterpret_cast<unsigned short*>(text.data());
  }

  std::wstring user_;
  std::wstring domain_;
  std::wstring password_;
  SEC_WINNT_AUTH_IDENTITY_W record_{};
};

// The record of a channel binding: its data stand right behind it.
std::vector<char> BindingRecord(const std::string& binding) {
  if (binding.empty()) return {};
  SEC_CHANNEL_BINDINGS head{};
  head.cbApplicationDataLength = SizeOf(binding);
  head.dwApplicationDataOffset = sizeof(head);
  std::vector<char> record(sizeof(head) + binding.size());
  std::memcpy(record.data(), &head, sizeof(head));
  std::memcpy(record.data() + sizeof(head), binding.data(), binding.size());
  return record;
}

class SspiContext final : public SystemContext {
 public:
  SspiContext(SystemPackage package, const std::string& target, const SystemAccount& account,
              const std::string& binding)
      : package_(package), target_(WideFromUtf8(target)), binding_(BindingRecord(binding)) {
    auto name = PackageName(package);
    Identity identity(account);
    const bool ownAccount = account.loginName.empty() && account.password.empty();
    TimeStamp expiry{};
    acquired_ = ::AcquireCredentialsHandleW(nullptr, name.data(), SECPKG_CRED_OUTBOUND, nullptr,
                                            ownAccount ? nullptr : identity.Record(), nullptr,
                                            nullptr, &credentials_, &expiry);
  }
  ~SspiContext() override {
    if (hasContext_) ::DeleteSecurityContext(&context_);
    if (acquired_ == SEC_E_OK) ::FreeCredentialsHandle(&credentials_);
  }

  Step Advance(std::string_view challenge) override;
  std::optional<std::string> Wrap(std::string_view message) override;
  std::optional<std::string> Unwrap(std::string_view message) override;

 private:
  SECURITY_STATUS Initialize(std::string_view challenge, std::string& response);
  std::optional<std::string> NtlmSigned(std::string_view message);
  std::optional<std::string> NtlmVerified(std::string message);

  const SystemPackage package_;
  std::wstring target_;
  std::vector<char> binding_;
  SECURITY_STATUS acquired_ = SEC_E_INTERNAL_ERROR;
  CredHandle credentials_{};
  CtxtHandle context_{};
  bool hasContext_ = false;
  bool isNtlm_ = false;  // known from what is said: not every system tells what it has negotiated
};

SystemContext::Step SspiContext::Advance(std::string_view challenge) {
  if (acquired_ != SEC_E_OK) return {{}, false, SspiFailure(acquired_)};
  Step step;
  const auto status = Initialize(challenge, step.response);
  if (status == SEC_E_OK) {
    step.complete = true;
  } else if (status != SEC_I_CONTINUE_NEEDED) {
    return {{}, false, SspiFailure(status)};
  }
  return step;
}

SECURITY_STATUS SspiContext::Initialize(std::string_view challenge, std::string& response) {
  const bool first = !hasContext_;
  std::string input(challenge);
  std::array<SecBuffer, 2> in{};
  std::size_t count = 0;
  if (!first) in[count++] = {SizeOf(input), SECBUFFER_TOKEN, input.data()};
  // Wine takes anything in the first call for the server's words.
  if (!binding_.empty() && !(first && IsWine())) {
    in[count++] = {static_cast<unsigned long>(binding_.size()), SECBUFFER_CHANNEL_BINDINGS,
                   binding_.data()};
  }
  auto inList = ListOf(in.data(), count);
  SecBuffer out{0, SECBUFFER_TOKEN, nullptr};
  auto outList = ListOf(&out, 1);
  unsigned long attributes = 0;
  TimeStamp expiry{};
  const unsigned long flags =
      kAllocate | (package_ == SystemPackage::kNegotiate ? kNegotiateFlags : 0);
  auto status = ::InitializeSecurityContextW(
      &credentials_, first ? nullptr : &context_, target_.data(), flags, 0, SECURITY_NATIVE_DREP,
      count > 0 ? &inList : nullptr, 0, &context_, &outList, &attributes, &expiry);
  if (status >= 0) hasContext_ = true;
  if (status == SEC_I_COMPLETE_NEEDED || status == SEC_I_COMPLETE_AND_CONTINUE) {
    const auto completed = ::CompleteAuthToken(&context_, &outList);
    const bool goesOn = status == SEC_I_COMPLETE_AND_CONTINUE;
    status = completed != SEC_E_OK ? completed : goesOn ? SEC_I_CONTINUE_NEEDED : SEC_E_OK;
  }
  if (out.pvBuffer != nullptr) {
    response.assign(static_cast<const char*>(out.pvBuffer), out.cbBuffer);
    if (response.find(kNtlmLogin) != std::string::npos) isNtlm_ = true;
    ::FreeContextBuffer(out.pvBuffer);
  }
  return status;
}

std::optional<std::string> SspiContext::Wrap(std::string_view message) {
  if (isNtlm_) return NtlmSigned(message);
  SecPkgContext_Sizes sizes{};
  if (::QueryContextAttributesW(&context_, SECPKG_ATTR_SIZES, &sizes) != SEC_E_OK) return {};
  std::string trailer(sizes.cbSecurityTrailer, '\0');
  std::string data(message);
  std::string padding(sizes.cbBlockSize, '\0');
  std::array<SecBuffer, 3> buffers{{{SizeOf(trailer), SECBUFFER_TOKEN, trailer.data()},
                                    {SizeOf(data), SECBUFFER_DATA, data.data()},
                                    {SizeOf(padding), SECBUFFER_PADDING, padding.data()}}};
  auto list = ListOf(buffers.data(), buffers.size());
  if (::EncryptMessage(&context_, SECQOP_WRAP_NO_ENCRYPT, &list, 0) != SEC_E_OK) return {};
  std::string wrapped;
  for (const auto& buffer : buffers) {
    wrapped.append(static_cast<const char*>(buffer.pvBuffer), buffer.cbBuffer);
  }
  return wrapped;
}

std::optional<std::string> SspiContext::Unwrap(std::string_view message) {
  std::string stream(message);
  if (isNtlm_) return NtlmVerified(std::move(stream));
  std::array<SecBuffer, 2> buffers{
      {{SizeOf(stream), SECBUFFER_STREAM, stream.data()}, {0, SECBUFFER_DATA, nullptr}}};
  auto list = ListOf(buffers.data(), buffers.size());
  unsigned long quality = 0;
  if (::DecryptMessage(&context_, &list, 0, &quality) != SEC_E_OK) return {};
  const auto& data = buffers[1];  // a part of the message
  if (data.pvBuffer == nullptr) return std::string();
  return std::string(static_cast<const char*>(data.pvBuffer), data.cbBuffer);
}

// [MS-NLMP], 3.4: the signature, and the message behind it in clear.
std::optional<std::string> SspiContext::NtlmSigned(std::string_view message) {
  std::string signature(kNtlmSignature, '\0');
  std::string data(message);
  std::array<SecBuffer, 2> buffers{{{SizeOf(data), SECBUFFER_DATA, data.data()},
                                    {SizeOf(signature), SECBUFFER_TOKEN, signature.data()}}};
  auto list = ListOf(buffers.data(), buffers.size());
  if (::MakeSignature(&context_, 0, &list, 0) != SEC_E_OK) return {};
  return signature + data;
}

std::optional<std::string> SspiContext::NtlmVerified(std::string message) {
  if (message.size() < kNtlmSignature) return {};
  std::array<SecBuffer, 2> buffers{
      {{SizeOf(message) - kNtlmSignature, SECBUFFER_DATA, message.data() + kNtlmSignature},
       {kNtlmSignature, SECBUFFER_TOKEN, message.data()}}};
  auto list = ListOf(buffers.data(), buffers.size());
  unsigned long quality = 0;
  if (::VerifySignature(&context_, &list, 0, &quality) != SEC_E_OK) return {};
  return message.substr(kNtlmSignature);
}

}  // namespace

bool SspiLogin::Knows(SystemPackage package) const {
  auto name = PackageName(package);
  SecPkgInfoW* info = nullptr;
  if (::QuerySecurityPackageInfoW(name.data(), &info) != SEC_E_OK) return false;
  ::FreeContextBuffer(info);
  return true;
}

std::unique_ptr<SystemContext> SspiLogin::Begin(SystemPackage package, const std::string& target,
                                                const SystemAccount& account,
                                                const std::string& binding) const {
  return std::make_unique<SspiContext>(package, target, account, binding);
}

}  // namespace quillon
