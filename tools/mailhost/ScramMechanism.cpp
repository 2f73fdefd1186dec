// SCRAM (RFC 5802, RFC 7677), with and without channel binding.

#include <algorithm>
#include <utility>

#include "Digest.h"
#include "LoginMechanism.h"

namespace mailhost {

namespace {

using Kind = LoginStep::Kind;

constexpr int kRounds = 4096;

// The value of the attribute that stands first, such as "n=", and is taken off; nothing when
// another stands there.
std::optional<std::string_view> TakeAttribute(std::string_view& text, std::string_view name) {
  if (!text.starts_with(name)) return std::nullopt;
  const std::size_t end = std::min(text.find(','), text.size());
  const std::string_view value = text.substr(name.size(), end - name.size());
  text.remove_prefix(std::min(end + 1, text.size()));
  return value;
}

std::string Xor(std::string a, std::string_view b) {
  std::transform(a.begin(), a.end(), b.begin(), a.begin(),
                 [](char x, char y) { return static_cast<char>(x ^ y); });
  return a;
}

class ScramLogin : public LoginMechanism {
 public:
  ScramLogin(const EVP_MD* method, bool binds, const LoginPlace& place)
      : method_(method), binds_(binds), place_(place) {}

  LoginStep Next(std::optional<std::string_view> response) override {
    if (!response) return {Kind::kChallenge};
    switch (std::exchange(turn_, turn_ + 1)) {
      case 0:
        return First(*response);
      case 1:
        return Last(*response);
      default:
        // The client has seen the server's proof, and says nothing more.
        return {response->empty() ? Kind::kAccepted : Kind::kRefused};
    }
  }

 private:
  LoginStep First(std::string_view message) {
    std::string_view rest = message;
    if (!TakeHeader(rest)) return {Kind::kRefused};
    header_ = message.substr(0, message.size() - rest.size());
    transcript_ = rest;
    const auto name = TakeAttribute(rest, "n=");
    const auto nonce = TakeAttribute(rest, "r=");
    if (!name || !nonce || nonce->empty() || PlainName(*name) != place_.account.user) {
      return {Kind::kRefused};
    }
    salt_ = RandomBytes(12);
    nonce_ = std::string(*nonce) + Base64(RandomBytes(18));
    std::string challenge = "r=" + nonce_ + ",s=" + Base64(salt_) + ",i=" + std::to_string(kRounds);
    transcript_ += "," + challenge;
    return {Kind::kChallenge, std::move(challenge)};
  }

  // gs2-header: what the client makes of channel binding, and whose mail it wants.
  bool TakeHeader(std::string_view& rest) {
    const std::size_t comma = rest.find(',');
    if (comma == std::string_view::npos) return false;
    const std::string_view flag = rest.substr(0, comma);
    rest.remove_prefix(comma + 1);
    if (binds_) {
      if (!flag.starts_with("p=") || place_.tls == nullptr) return false;
      const auto binding = place_.tls->Binding(flag.substr(2));
      if (!binding) return false;
      binding_ = *binding;
    } else if (flag != "n" && (flag != "y" || place_.offersBinding)) {
      // "y" says that this host offers none: somebody on the way has taken the offer out.
      return false;
    }
    if (rest.starts_with("a=")) return false;  // for somebody else
    if (!rest.starts_with(',')) return false;
    rest.remove_prefix(1);
    return true;
  }

  LoginStep Last(std::string_view message) {
    const std::size_t end = message.rfind(",p=");
    if (end == std::string_view::npos) return {Kind::kRefused};
    std::string_view rest = message.substr(0, end);
    transcript_.append(",").append(rest);
    const auto proof = FromBase64(message.substr(end + 3));
    if (TakeAttribute(rest, "c=") != Base64(header_ + binding_)) return {Kind::kRefused};
    if (TakeAttribute(rest, "r=") != nonce_ || !proof) return {Kind::kRefused};
    const std::string salted = StretchedKey(method_, place_.account.password, salt_, kRounds);
    const std::string clientKey = Hmac(method_, salted, "Client Key");
    const std::string signature = Hmac(method_, Hash(method_, clientKey), transcript_);
    if (*proof != Xor(clientKey, signature)) return {Kind::kRefused};
    const std::string serverKey = Hmac(method_, salted, "Server Key");
    return {Kind::kChallenge, "v=" + Base64(Hmac(method_, serverKey, transcript_))};
  }

  const EVP_MD* const method_;
  const bool binds_;
  const LoginPlace place_;
  int turn_ = 0;
  std::string header_;
  std::string binding_;
  std::string nonce_;
  std::string salt_;
  std::string transcript_;  // what both sign
};

}  // namespace

std::unique_ptr<LoginMechanism> MakeScramSha1(const LoginPlace& place) {
  return std::make_unique<ScramLogin>(EVP_sha1(), false, place);
}

std::unique_ptr<LoginMechanism> MakeScramSha1Plus(const LoginPlace& place) {
  return std::make_unique<ScramLogin>(EVP_sha1(), true, place);
}

std::unique_ptr<LoginMechanism> MakeScramSha256(const LoginPlace& place) {
  return std::make_unique<ScramLogin>(EVP_sha256(), false, place);
}

std::unique_ptr<LoginMechanism> MakeScramSha256Plus(const LoginPlace& place) {
  return std::make_unique<ScramLogin>(EVP_sha256(), true, place);
}

}  // namespace mailhost
