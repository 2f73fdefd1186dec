#include "oauth/DeviceFlow.h"

#include <algorithm>
#include <utility>

#include "core/ServerWords.h"
#include "oauth/FormBody.h"
#include "oauth/ProviderAnswer.h"
#include "oauth/TokenAnswer.h"

namespace quillon {
namespace {

// RFC 8628, 3.2 and 3.5.
constexpr int kUsualInterval = 5;
constexpr TickCount kSlower = 5000;
constexpr TickCount kShortestInterval = 1000;
constexpr int kLongestInterval = 60;
constexpr int kUsualTime = 900;
constexpr int kLongestTime = 3600;

constexpr const char* kTooLate = "The code was not entered in time.";

}  // namespace

DeviceFlow::DeviceFlow(EventLoop& loop, HttpsClient& https, const OAuthAccount& account, Show show,
                       Done done)
    : loop_(loop),
      https_(https),
      account_(account),
      show_(std::move(show)),
      done_(std::move(done)),
      next_(loop, [this] { Poll(); }) {
  const HttpsForm form{account_.deviceUrl, FormBody({{"client_id", account_.clientId},
                                                     {"client_secret", account_.clientSecret},
                                                     {"scope", account_.scope}})};
  request_ = https_.Post(form, [this](const HttpsAnswer& answer) { OnCode(answer); });
}

void DeviceFlow::Fail(const std::string& failure) {
  // The flow may end inside.
  const auto done = done_;
  done({{}, failure});
}

void DeviceFlow::OnCode(const HttpsAnswer& answer) {
  request_ = nullptr;
  const auto read = ReadProviderAnswer(answer, account_.deviceUrl, {account_.clientSecret});
  if (!read.failure.empty()) return Fail(read.failure);
  deviceCode_ = read.members.Text("device_code");
  DevicePrompt prompt;
  prompt.address = read.members.Text("verification_uri");
  // The name of an early draft, which is still in use.
  if (prompt.address.empty()) prompt.address = read.members.Text("verification_url");
  prompt.completeAddress = read.members.Text("verification_uri_complete");
  prompt.code = ServerWords(read.members.Text("user_code"));
  if (deviceCode_.empty() || prompt.code.empty() || !IsProviderUrl(prompt.address)) {
    return Fail(WrongAnswer(account_.deviceUrl, "has no code, or no address to enter it at"));
  }
  if (!IsProviderUrl(prompt.completeAddress)) prompt.completeAddress.clear();
  prompt.goodFor = SecondsOf(read.members, "expires_in", kUsualTime, kLongestTime);
  interval_ = std::max(SecondsOf(read.members, "interval", kUsualInterval, kLongestInterval),
                       kShortestInterval);
  deadline_ = loop_.Now() + prompt.goodFor;
  WaitForPoll();
  // Last, because the flow may end inside.
  const auto show = show_;
  show(prompt);
}

void DeviceFlow::WaitForPoll() {
  next_.Start(interval_);
}

void DeviceFlow::Poll() {
  if (loop_.Now() > deadline_) return Fail(trouble_.empty() ? kTooLate : trouble_);
  const HttpsForm form{account_.tokenUrl,
                       FormBody({{"grant_type", "urn:ietf:params:oauth:grant-type:device_code"},
                                 {"device_code", deviceCode_},
                                 {"client_id", account_.clientId},
                                 {"client_secret", account_.clientSecret}})};
  request_ = https_.Post(form, [this](const HttpsAnswer& answer) { OnToken(answer); });
}

void DeviceFlow::OnToken(const HttpsAnswer& answer) {
  request_ = nullptr;
  const auto read =
      ReadTokenAnswer(answer, account_.tokenUrl, {account_.clientSecret, deviceCode_});
  const bool slower = read.error == "slow_down";
  if (slower || read.error == "authorization_pending" || (read.passing && read.error.empty())) {
    if (slower || read.passing) interval_ += kSlower;
    trouble_ = read.passing ? read.failure : std::string();
    return WaitForPoll();
  }
  if (read.error == "expired_token") return Fail(kTooLate);
  if (read.error == "access_denied") return Fail("The permission was refused. " + read.failure);
  if (!read.failure.empty()) return Fail(read.failure);
  if (read.refreshToken.empty()) {
    return Fail(WrongAnswer(account_.tokenUrl,
                            "has no refresh token; some want \"offline_access\" in the scope"));
  }
  const auto done = done_;
  done({read.refreshToken, {}});
}

}  // namespace quillon
