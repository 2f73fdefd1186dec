#include "oauth/ProviderTokens.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "oauth/FormBody.h"
#include "oauth/ProviderAnswer.h"
#include "oauth/TokenAnswer.h"

namespace quillon {
namespace {

// A login begun with a token should end before the token does.
constexpr TickCount kMargin = 60'000;
constexpr std::size_t kMostEntries = 32;
constexpr std::size_t kMostRefreshTokens = 8;

// Why the account cannot be asked for; empty: it can.
std::string MissingIn(const OAuthAccount& account) {
  if (!IsProviderUrl(account.tokenUrl)) return "TokenURL is no address that begins with https://.";
  if (account.clientId.empty()) return "There is no ClientId.";
  if (account.refreshToken.empty()) {
    return "There is no refresh token: quillon.exe /Authorize asks the provider for one.";
  }
  return {};
}

}  // namespace

class ProviderTokens::Handle final : public Request {
 public:
  explicit Handle(std::shared_ptr<Waiting> waiting) : waiting_(std::move(waiting)) {}
  ~Handle() override { waiting_->result = nullptr; }

 private:
  std::shared_ptr<Waiting> waiting_;
};

std::unique_ptr<AccessTokens::Request> ProviderTokens::Obtain(const OAuthAccount& account,
                                                              Result result) {
  auto waiting = std::make_shared<Waiting>(Waiting{std::move(result)});
  auto handle = std::make_unique<Handle>(waiting);
  if (auto missing = MissingIn(account); !missing.empty()) {
    Deliver(waiting, {{}, std::move(missing)});
    return handle;
  }
  auto* const found = Find(account);
  auto& entry = found != nullptr ? *found : Add(account);
  if (loop_.Now() < entry.goodUntil) {
    Deliver(waiting, {entry.token, {}});
    return handle;
  }
  entry.waiting.push_back(std::move(waiting));
  if (!entry.request) Ask(entry);
  return handle;
}

void ProviderTokens::Forget(const OAuthAccount& account) {
  if (auto* const entry = Find(account)) {
    entry->token.clear();
    entry->goodUntil = 0;
  }
}

ProviderTokens::Entry* ProviderTokens::Find(const OAuthAccount& account) {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    auto known = entry.account;
    known.refreshToken = account.refreshToken;
    return known == account && std::find(entry.refreshTokens.begin(), entry.refreshTokens.end(),
                                         account.refreshToken) != entry.refreshTokens.end();
  });
  return found != entries_.end() ? &*found : nullptr;
}

ProviderTokens::Entry& ProviderTokens::Add(const OAuthAccount& account) {
  if (entries_.size() >= kMostEntries) {
    const auto idle = std::find_if(entries_.begin(), entries_.end(),
                                   [](const Entry& entry) { return !entry.request; });
    if (idle != entries_.end()) entries_.erase(idle);
  }
  auto& entry = entries_.emplace_back();
  entry.account = account;
  entry.refreshTokens.push_back(account.refreshToken);
  return entry;
}

void ProviderTokens::Ask(Entry& entry) {
  const auto& account = entry.account;
  const HttpsForm form{account.tokenUrl, FormBody({{"grant_type", "refresh_token"},
                                                   {"refresh_token", entry.refreshTokens.back()},
                                                   {"client_id", account.clientId},
                                                   {"client_secret", account.clientSecret},
                                                   {"scope", account.scope}})};
  entry.request = https_.Post(form, [this, &entry, asked = loop_.Now()](const HttpsAnswer& answer) {
    OnAnswer(entry, asked, answer);
  });
}

void ProviderTokens::OnAnswer(Entry& entry, TickCount asked, const HttpsAnswer& answer) {
  entry.request = nullptr;
  const auto& account = entry.account;
  auto read =
      ReadTokenAnswer(answer, account.tokenUrl, {account.clientSecret, entry.refreshTokens.back()});
  if (read.error == "invalid_grant") {
    read.failure += " quillon.exe /Authorize asks the provider for its permission anew.";
  }
  const auto margin = std::min(kMargin, read.lifetime / 2);
  entry.token = read.accessToken;
  entry.goodUntil = read.failure.empty() ? asked + read.lifetime - margin : 0;
  for (const auto& waiting : std::exchange(entry.waiting, {})) {
    Deliver(waiting, {read.accessToken, read.failure});
  }
  if (read.refreshToken.empty() || read.refreshToken == entry.refreshTokens.back()) return;
  auto before = account;
  before.refreshToken = entry.refreshTokens.back();
  if (entry.refreshTokens.size() >= kMostRefreshTokens) {
    entry.refreshTokens.erase(entry.refreshTokens.begin());
  }
  entry.refreshTokens.push_back(read.refreshToken);
  // Last, because it may fail.
  replaced_(before, read.refreshToken);
}

void ProviderTokens::Deliver(const std::shared_ptr<Waiting>& waiting, const AccessToken& token) {
  loop_.Post([waiting, token] {
    if (const auto call = std::exchange(waiting->result, nullptr)) call(token);
  });
}

}  // namespace quillon
