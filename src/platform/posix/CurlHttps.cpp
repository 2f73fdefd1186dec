#include "platform/posix/CurlHttps.h"

#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace quillon {
namespace {

struct CloseCurl {
  void operator()(CURL* handle) const { ::curl_easy_cleanup(handle); }
  void operator()(curl_slist* list) const { ::curl_slist_free_all(list); }
};

std::size_t Append(char* bytes, std::size_t size, std::size_t count, void* target) {
  auto& body = *static_cast<std::string*>(target);
  if (body.size() + size * count > kLargestHttpsBody) return 0;
  body.append(bytes, size * count);
  return size * count;
}

const char* FailureText(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return "the server did not answer in time";
    case CURLE_COULDNT_RESOLVE_HOST:
      return "the server's name is not known";
    case CURLE_COULDNT_CONNECT:
      return "there is no connection to the server";
    case CURLE_PEER_FAILED_VERIFICATION:
      return "the server's certificate was refused";
    case CURLE_WRITE_ERROR:
      return "the server's answer is too long";
    case CURLE_UNSUPPORTED_PROTOCOL:
      return "its address does not begin with https://";
    default:
      return ::curl_easy_strerror(code);
  }
}

}  // namespace

HttpsAnswer PostWithCurl(const HttpsForm& form, const std::string& roots) {
  static std::once_flag once;
  std::call_once(once, [] { ::curl_global_init(CURL_GLOBAL_DEFAULT); });
  const std::unique_ptr<CURL, CloseCurl> curl(::curl_easy_init());
  const std::unique_ptr<curl_slist, CloseCurl> fields(
      ::curl_slist_append(nullptr, "Accept: application/json"));
  HttpsAnswer answer;
  const auto set = [&curl](CURLoption option, auto value) {
    ::curl_easy_setopt(curl.get(), option, value);
  };
  set(CURLOPT_URL, form.url.c_str());
  set(CURLOPT_PROTOCOLS_STR, "https");
  set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
  set(CURLOPT_FOLLOWLOCATION, 0L);
  set(CURLOPT_HTTPHEADER, fields.get());
  set(CURLOPT_POSTFIELDSIZE, static_cast<long>(form.body.size()));
  set(CURLOPT_POSTFIELDS, form.body.c_str());
  set(CURLOPT_TIMEOUT_MS, static_cast<long>(form.patience));
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_WRITEFUNCTION, &Append);
  set(CURLOPT_WRITEDATA, static_cast<void*>(&answer.body));
  if (!roots.empty()) set(CURLOPT_CAINFO, roots.c_str());
  if (const auto code = ::curl_easy_perform(curl.get()); code != CURLE_OK) {
    return {0, {}, FailureText(code)};
  }
  long status = 0;
  ::curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  answer.status = static_cast<int>(status);
  return answer;
}

}  // namespace quillon
