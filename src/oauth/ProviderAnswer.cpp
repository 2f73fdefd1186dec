#include "oauth/ProviderAnswer.h"

#include <algorithm>

#include "core/ServerWords.h"
#include "core/Text.h"
#include "oauth/FormBody.h"

namespace quillon {
namespace {

constexpr std::string_view kScheme = "https://";
constexpr TickCount kSecond = 1000;

// Who was asked, without what stands behind the host, where some write a secret.
std::string Provider(std::string_view url) {
  if (url.starts_with(kScheme)) url.remove_prefix(kScheme.size());
  return "The token server " + ServerWords(url.substr(0, url.find_first_of("/?#")));
}

// For the end of a sentence.
std::string Words(std::string text, const std::vector<std::string>& secrets) {
  for (const auto& secret : secrets) {
    text = WithoutSecret(text, secret);
    text = WithoutSecret(text, FormEncoded(secret));
  }
  text = TrimmedCopy(ServerWords(text));
  while (text.ends_with('.')) text.pop_back();
  return text;
}

}  // namespace

ProviderAnswer ReadProviderAnswer(const HttpsAnswer& answer, std::string_view url,
                                  const std::vector<std::string>& secrets) {
  ProviderAnswer read;
  if (answer.status == 0) {
    read.passing = true;
    read.failure = Provider(url) + " could not be asked: " + Words(answer.failure, secrets) + ".";
    return read;
  }
  auto members = JsonObject::Read(answer.body);
  if (members) read.error = members->Text("error");
  if (!read.error.empty()) {
    auto words = read.error;
    if (const auto more = members->Text("error_description"); !more.empty()) words += ": " + more;
    read.failure = Provider(url) + " refused: " + Words(words, secrets) + ".";
  } else if (answer.status != 200) {
    read.failure = Provider(url) + " answered with HTTP status " + std::to_string(answer.status) +
                   " and without a reason.";
  } else if (!members) {
    read.failure = WrongAnswer(url, "is not readable");
  } else {
    read.members = std::move(*members);
  }
  read.passing = answer.status >= 500;
  return read;
}

std::string WrongAnswer(std::string_view url, std::string_view what) {
  return Provider(url) + " gave an answer that " + std::string(what) + ".";
}

TickCount SecondsOf(const JsonObject& members, std::string_view name, int otherwise, int most) {
  const double seconds = members.Number(name).value_or(otherwise);
  return static_cast<TickCount>(std::clamp<double>(seconds, 0, most)) * kSecond;
}

bool IsProviderUrl(std::string_view url) {
  if (!url.starts_with(kScheme)) return false;
  const auto host = url.substr(kScheme.size());
  return !host.empty() && host.front() != '/' &&
         std::all_of(url.begin(), url.end(), [](char c) { return c > ' ' && c < 127; });
}

}  // namespace quillon
