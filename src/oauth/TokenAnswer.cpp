#include "oauth/TokenAnswer.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "core/Text.h"
#include "oauth/ProviderAnswer.h"

namespace quillon {
namespace {

// A provider that says nothing of the time may mean a short one.
constexpr int kUsualLifetime = 300;
constexpr int kLongestLifetime = 24 * 60 * 60;
// What a login can take along; the big providers' have 4 KiB.
constexpr std::size_t kLongestToken = 32 * 1024;

// The characters of a token (RFC 6749, A.12 and A.17), less the blank, which would end it in a
// login.
bool IsToken(std::string_view text) {
  return !text.empty() && text.size() <= kLongestToken &&
         std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 127; });
}

// What is wrong with an answer that says it is a success; empty: nothing.
std::string_view FaultOf(const TokenAnswer& read, std::string_view type) {
  if (!IsToken(read.accessToken)) return "has no access token";
  if (!type.empty() && !EqualsIgnoreCase(type, "Bearer")) return "has a token of an unknown kind";
  if (!read.refreshToken.empty() && !IsToken(read.refreshToken)) {
    return "has a refresh token that is none";
  }
  return {};
}

}  // namespace

TokenAnswer ReadTokenAnswer(const HttpsAnswer& answer, std::string_view url,
                            const std::vector<std::string>& secrets) {
  auto provided = ReadProviderAnswer(answer, url, secrets);
  TokenAnswer read;
  read.failure = std::move(provided.failure);
  read.error = std::move(provided.error);
  read.passing = provided.passing;
  if (!read.failure.empty()) return read;
  read.accessToken = provided.members.Text("access_token");
  read.refreshToken = provided.members.Text("refresh_token");
  if (const auto fault = FaultOf(read, provided.members.Text("token_type")); !fault.empty()) {
    return {WrongAnswer(url, fault), {}, false, {}, {}, 0};
  }
  read.lifetime = SecondsOf(provided.members, "expires_in", kUsualLifetime, kLongestLifetime);
  return read;
}

}  // namespace quillon
