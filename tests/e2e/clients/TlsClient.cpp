// Makes secured connections to servers on this machine and says what comes of each:
//
//   TlsClient ROOT PORT HOST [PORT HOST...]
//
//   TlsClient own FILE SUBJECT
//
// The other form makes a certificate of the user's own, with a key, and writes it to the file; a
// HOST with "/SUBJECT" behind it shows that one. HOST is the name that the certificate is checked
// for, ROOT the file of the only root that is trusted. A server whose certificate is good has to
// send back what it gets.
#include <windows.h>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <wincrypt.h>

#include "net/CertificateCheck.h"
#include "net/HostName.h"
#include "net/SecuredStream.h"
#include "platform/Platform.h"

namespace {

using namespace quillon;

constexpr TickCount kPatience = 30000;
constexpr std::size_t kEchoed = 300'000;

class Connection : private ByteStream::Handler {
 public:
  Connection(NetworkLoop& loop, TlsLibrary& library) : loop_(loop), library_(library) {}

  std::string Try(std::uint16_t port, const std::string& wanted, const std::string& root) {
    const auto slash = wanted.find('/');
    const auto host = wanted.substr(0, slash);
    const auto own = slash == std::string::npos ? std::string() : wanted.substr(slash + 1);
    SocketAddress address;
    address.bytes = {127, 0, 0, 1};
    address.port = port;
    plain_ = loop_.Connect(address, *this);
    if (!Wait([this] { return connected_; })) return "no connection";
    stream_ = std::make_unique<SecuredStream>(loop_, std::move(plain_),
                                              library_.MakeSession({ServerNameFor(host), own}));
    stream_->SetHandler(*this);
    std::optional<bool> secured;
    stream_->Begin([&](bool result) { secured = result; });
    if (!Wait([&] { return secured.has_value(); })) return "no end of the handshake";
    if (!*secured) return "failed: " + stream_->Reason();
    const auto verdict =
        CheckCertificate(library_, *crypto_, stream_->Facts().chain, {host, {}, {false, root}});
    if (!verdict.Good()) {
      return "refused " + std::to_string(static_cast<int>(verdict.fault)) + ": " + verdict.text;
    }
    return Echo();
  }

 private:
  template <typename Condition>
  bool Wait(const Condition& condition) {
    return loop_.RunUntil(condition, loop_.Now() + kPatience);
  }

  std::string Echo() {
    while (outgoing_.size() < kEchoed) outgoing_ += std::to_string(outgoing_.size()) + "\r\n";
    stream_->Accept();
    OnStreamWritable();
    Wait([this] { return end_.has_value(); });
    const auto& facts = stream_->Facts();
    std::string end = "still open";
    if (end_) end = *end_ == IoResult::Status::Failed ? stream_->Reason() : "closed";
    if (stream_->Truncated()) end = "cut off";
    std::array<char, 32> version{};
    std::snprintf(version.data(), version.size(), "%04x", static_cast<unsigned>(facts.version));
    return std::string("secured ") + version.data() +
           (facts.bits >= 128 && !facts.cipher.empty() ? " strong" : " weak") +
           (stream_->Session().UniqueBinding().size() == 12 ? " bound" : " unbound") +
           (received_ == outgoing_ ? " same, " : " other, ") + end;
  }

  void OnStreamConnected() override { connected_ = true; }
  void OnStreamFailed(int) override {}
  // Also of the stream below, as long as there is no other.
  void OnStreamReadable() override {
    if (!stream_) return;
    std::array<char, 20'000> block;
    const auto result = stream_->Read(block);
    if (result.status == IoResult::Status::WouldBlock) return;
    if (result.status == IoResult::Status::Ok) {
      received_.append(block.data(), result.count);
      return;
    }
    end_ = result.status;
    stream_->WantRead(false);
  }
  void OnStreamWritable() override {
    if (!stream_) return;
    sent_ += stream_->Write(std::string_view(outgoing_).substr(sent_)).count;
  }

  NetworkLoop& loop_;
  TlsLibrary& library_;
  std::unique_ptr<Crypto> crypto_ = MakeCrypto();
  std::unique_ptr<ByteStream> plain_;
  std::unique_ptr<SecuredStream> stream_;
  bool connected_ = false;
  std::string outgoing_;
  std::size_t sent_ = 0;
  std::string received_;
  std::optional<IoResult::Status> end_;
};

// A key in a container of this program's name.
bool MakeKey(std::wstring& container) {
  HCRYPTPROV provider = 0;
  HCRYPTKEY key = 0;
  if (::CryptAcquireContextW(&provider, container.c_str(), MS_ENHANCED_PROV_W, PROV_RSA_FULL,
                             CRYPT_NEWKEYSET) == FALSE) {
    return false;
  }
  const bool made =
      ::CryptGenKey(provider, AT_KEYEXCHANGE, (2048U << 16) | CRYPT_EXPORTABLE, &key) != FALSE;
  if (made) ::CryptDestroyKey(key);
  ::CryptReleaseContext(provider, 0);
  return made;
}

// Puts a certificate with a new key into the user's store, and its DER into the file.
bool MakeOwn(const char* path, const std::string& subject) {
  const std::string name = "CN=" + subject;
  std::array<BYTE, 200> encoded{};
  DWORD size = encoded.size();
  if (::CertStrToNameA(X509_ASN_ENCODING, name.c_str(), CERT_X500_NAME_STR, nullptr, encoded.data(),
                       &size, nullptr) == FALSE) {
    return false;
  }
  CERT_NAME_BLOB blob{size, encoded.data()};
  std::wstring container = L"TlsClient";
  std::wstring providerName = MS_ENHANCED_PROV_W;
  CRYPT_KEY_PROV_INFO place{};
  place.pwszContainerName = container.data();
  place.pwszProvName = providerName.data();
  place.dwProvType = PROV_RSA_FULL;
  place.dwKeySpec = AT_KEYEXCHANGE;
  if (!MakeKey(container)) return false;
  const auto* const made =
      ::CertCreateSelfSignCertificate(0, &blob, 0, &place, nullptr, nullptr, nullptr, nullptr);
  auto* const store = ::CertOpenSystemStoreW(0, L"MY");
  if (made == nullptr || store == nullptr) return false;
  const auto added =
      ::CertAddCertificateContextToStore(store, made, CERT_STORE_ADD_ALWAYS, nullptr);
  ::CertCloseStore(store, 0);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(made->pbCertEncoded),
             static_cast<std::streamsize>(made->cbCertEncoded));
  ::CertFreeCertificateContext(made);
  return added != FALSE && file.good();
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 4 && std::string_view(arguments[1]) == "own") {
    return MakeOwn(arguments[2], arguments[3]) ? 0 : 1;
  }
  if (count < 4 || count % 2 != 0) return 2;
  std::ifstream file(arguments[1], std::ios::binary);
  const std::string root{std::istreambuf_iterator<char>(file), {}};
  const auto loop = MakeNetworkLoop();
  const auto library = MakeTlsLibrary();
  for (int i = 2; i + 1 < count; i += 2) {
    const auto port = static_cast<std::uint16_t>(std::stoi(arguments[i]));
    const std::string host = arguments[i + 1];
    const auto said = Connection(*loop, *library).Try(port, host, root);
    std::printf("%s %s\n", arguments[i], said.c_str());
  }
  return 0;
}
