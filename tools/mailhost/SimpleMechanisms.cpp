// The mechanisms that say a secret, or one digest of it.

#include <utility>

#include "Digest.h"
#include "LoginMechanism.h"

namespace mailhost {

namespace {

using Kind = LoginStep::Kind;

LoginStep Verdict(bool good) {
  return {good ? Kind::kAccepted : Kind::kRefused};
}

// The text up to `end`, which is taken off with it; all of the text when `end` is not there.
std::string_view TakeField(std::string_view& text, char end) {
  const std::size_t length = text.find(end);
  const std::string_view field = text.substr(0, length);
  text.remove_prefix(length == std::string_view::npos ? text.size() : length + 1);
  return field;
}

// RFC 4616: [authzid] NUL name NUL password.
class PlainLogin : public LoginMechanism {
 public:
  explicit PlainLogin(const Account& account) : account_(account) {}

  LoginStep Next(std::optional<std::string_view> response) override {
    if (!response) return {Kind::kChallenge};
    std::string_view rest = *response;
    const std::string_view authority = TakeField(rest, '\0');
    const std::string_view name = TakeField(rest, '\0');
    const bool formed = !name.empty() && rest.find('\0') == std::string_view::npos;
    return Verdict(formed && (authority.empty() || authority == name) &&
                   account_.Accepts(name, rest));
  }

 private:
  const Account& account_;
};

// Never standardised: name and password, each asked for.
class AskedLogin : public LoginMechanism {
 public:
  explicit AskedLogin(const Account& account) : account_(account) {}

  LoginStep Next(std::optional<std::string_view> response) override {
    if (!response) return {Kind::kChallenge, "Username:"};
    if (name_) return Verdict(account_.Accepts(*name_, *response));
    name_ = *response;
    return {Kind::kChallenge, "Password:"};
  }

 private:
  const Account& account_;
  std::optional<std::string> name_;
};

// RFC 2195: the name and the digest of a challenge.
class CramMd5Login : public LoginMechanism {
 public:
  explicit CramMd5Login(const Account& account)
      : account_(account), challenge_("<" + Hex(RandomBytes(8)) + "@mailhost>") {}

  LoginStep Next(std::optional<std::string_view> response) override {
    if (!std::exchange(asked_, true)) {
      // Who answers before the question cannot know it.
      if (response) return Verdict(false);
      return {Kind::kChallenge, challenge_};
    }
    const std::string digest = Hex(Hmac(EVP_md5(), account_.password, challenge_));
    return Verdict(response == *account_.user + " " + digest);
  }

 private:
  const Account& account_;
  const std::string challenge_;
  bool asked_ = false;
};

// The value of `key` among fields that end in ^A.
std::string_view FieldNamed(std::string_view text, std::string_view key) {
  while (!text.empty()) {
    const std::string_view field = TakeField(text, '\1');
    if (field.starts_with(key)) return field.substr(key.size());
  }
  return {};
}

// XOAUTH2 and OAUTHBEARER (RFC 7628). A refusal is a challenge first, which the client answers.
class TokenLogin : public LoginMechanism {
 public:
  TokenLogin(const Account& account, bool standard) : account_(account), standard_(standard) {}

  LoginStep Next(std::optional<std::string_view> response) override {
    if (refused_) return Verdict(false);
    if (!response) return {Kind::kChallenge};
    if (NameIn(*response) && FieldNamed(*response, "auth=") == "Bearer " + *account_.token) {
      return Verdict(true);
    }
    refused_ = true;
    return {Kind::kChallenge, standard_ ? R"({"status":"invalid_token","scope":"mail"})"
                                        : R"({"status":"401","schemes":"bearer","scope":"mail"})"};
  }

 private:
  bool NameIn(std::string_view response) const {
    std::string_view rest = response;
    std::string_view head = TakeField(rest, '\1');
    constexpr std::string_view kName = "user=";
    if (!standard_) return head.starts_with(kName) && Knows(std::string(head.substr(kName.size())));
    // gs2-header: n,[a=name],
    if (TakeField(head, ',') != "n") return false;
    const std::string_view name = TakeField(head, ',');
    return head.empty() &&
           (name.empty() || (name.starts_with("a=") && Knows(PlainName(name.substr(2)))));
  }

  bool Knows(const std::optional<std::string>& name) const {
    return !account_.user || name == account_.user;
  }

  const Account& account_;
  const bool standard_;
  bool refused_ = false;
};

}  // namespace

std::unique_ptr<LoginMechanism> MakePlain(const LoginPlace& place) {
  return std::make_unique<PlainLogin>(place.account);
}

std::unique_ptr<LoginMechanism> MakeLogin(const LoginPlace& place) {
  return std::make_unique<AskedLogin>(place.account);
}

std::unique_ptr<LoginMechanism> MakeCramMd5(const LoginPlace& place) {
  return std::make_unique<CramMd5Login>(place.account);
}

std::unique_ptr<LoginMechanism> MakeXOAuth2(const LoginPlace& place) {
  return std::make_unique<TokenLogin>(place.account, false);
}

std::unique_ptr<LoginMechanism> MakeOAuthBearer(const LoginPlace& place) {
  return std::make_unique<TokenLogin>(place.account, true);
}

}  // namespace mailhost
