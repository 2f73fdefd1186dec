#include "bench/support/CurlMail.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace quillon::bench {

CurlHandle::CurlHandle(const std::string& url) : handle_(curl_easy_init(), &curl_easy_cleanup) {
  if (!handle_) throw std::runtime_error("libcurl does not start");
  Set(CURLOPT_URL, url.c_str());
  Set(CURLOPT_NOSIGNAL, 1L);
}

void CurlHandle::Check(CURLcode code) {
  if (code != CURLE_OK) throw std::runtime_error(curl_easy_strerror(code));
}

void CurlHandle::Trust(const CurlPlace& place) {
  if (!place.root.empty()) Set(CURLOPT_CAINFO, place.root.c_str());
}

CurlSmtp::CurlSmtp(const CurlPlace& place, const std::string& sender, const std::string& recipient)
    : handle_(place.Url("smtp") + "localhost"),
      recipients_(curl_slist_append(nullptr, recipient.c_str()), &curl_slist_free_all) {
  handle_.Trust(place);
  handle_.Set(CURLOPT_MAIL_FROM, sender.c_str());
  handle_.Set(CURLOPT_MAIL_RCPT, recipients_.get());
  handle_.Set(CURLOPT_UPLOAD, 1L);
  handle_.Set(CURLOPT_READFUNCTION, &CurlSmtp::OnRead);
  handle_.Set(CURLOPT_READDATA, static_cast<void*>(&rest_));
}

std::size_t CurlSmtp::OnRead(char* buffer, std::size_t size, std::size_t count, void* rest) {
  auto& text = *static_cast<std::string_view*>(rest);
  const auto taken = std::min(size * count, text.size());
  std::memcpy(buffer, text.data(), taken);
  text.remove_prefix(taken);
  return taken;
}

void CurlSmtp::Connect() {
  handle_.Set(CURLOPT_UPLOAD, 0L);
  handle_.Set(CURLOPT_NOBODY, 1L);
  handle_.Set(CURLOPT_CUSTOMREQUEST, "NOOP");
  handle_.Set(CURLOPT_FRESH_CONNECT, 1L);
  handle_.Set(CURLOPT_SSL_SESSIONID_CACHE, 0L);
  handle_.Perform();
}

void CurlSmtp::Send(std::string_view message) {
  rest_ = message;
  handle_.Perform();
}

CurlMime::CurlMime(const CurlPlace& place, const std::string& sender, const std::string& recipient)
    : handle_(place.Url("smtp") + "localhost"),
      recipients_(curl_slist_append(nullptr, recipient.c_str()), &curl_slist_free_all),
      fields_(curl_slist_append(nullptr, "Subject: A file"), &curl_slist_free_all) {
  handle_.Trust(place);
  handle_.Set(CURLOPT_MAIL_FROM, sender.c_str());
  handle_.Set(CURLOPT_MAIL_RCPT, recipients_.get());
  handle_.Set(CURLOPT_HTTPHEADER, fields_.get());
}

void CurlMime::Send(const std::string& text, const std::string& path) {
  const std::unique_ptr<curl_mime, decltype(&curl_mime_free)> mime(curl_mime_init(handle_.Get()),
                                                                   &curl_mime_free);
  curl_mime_data(curl_mime_addpart(mime.get()), text.data(), text.size());
  auto* const attachment = curl_mime_addpart(mime.get());
  curl_mime_filedata(attachment, path.c_str());
  curl_mime_encoder(attachment, "base64");
  handle_.Set(CURLOPT_MIMEPOST, mime.get());
  handle_.Perform();
}

CurlPop::CurlPop(const CurlPlace& place) : url_(place.Url("pop3")), handle_(url_) {
  handle_.Trust(place);
  handle_.Set(CURLOPT_USERPWD, "bench:bench");
  handle_.Set(CURLOPT_WRITEFUNCTION, &CurlPop::OnWrite);
  handle_.Set(CURLOPT_WRITEDATA, static_cast<void*>(&received_));
}

std::size_t CurlPop::OnWrite(char* data, std::size_t size, std::size_t count, void* received) {
  static_cast<std::string*>(received)->append(data, size * count);
  return size * count;
}

std::size_t CurlPop::LoadHeaders(std::size_t count) {
  std::size_t bytes = 0;
  for (std::size_t number = 1; number <= count; ++number) {
    received_.clear();
    handle_.Set(CURLOPT_CUSTOMREQUEST, ("TOP " + std::to_string(number) + " 0").c_str());
    handle_.Perform();
    bytes += received_.size();
  }
  return bytes;
}

const std::string& CurlPop::LoadMessage() {
  received_.clear();
  handle_.Set(CURLOPT_URL, (url_ + "1").c_str());
  handle_.Perform();
  return received_;
}

}  // namespace quillon::bench
