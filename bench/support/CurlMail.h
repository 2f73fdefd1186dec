// The other side of the Internet benchmarks: libcurl, one handle and one connection per protocol.
#pragma once

#include <cstddef>
#include <cstdint>
#include <curl/curl.h>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace quillon::bench {

struct CurlPlace;

class CurlHandle {
 public:
  explicit CurlHandle(const std::string& url);
  void Trust(const CurlPlace& place);

  template <typename Value>
  void Set(CURLoption option, Value value) {
    Check(curl_easy_setopt(handle_.get(), option, value));
  }
  CURL* Get() const noexcept { return handle_.get(); }
  void Perform() { Check(curl_easy_perform(handle_.get())); }

 private:
  static void Check(CURLcode code);

  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle_;
};

// Where a side of libcurl connects to: over TLS when a root is given, in PEM.
struct CurlPlace {
  // NOLINTNEXTLINE(google-explicit-constructor): a port alone is a place on this machine.
  CurlPlace(std::uint16_t where, std::string trusted = {})
      : port(where), root(std::move(trusted)) {}

  std::string Url(const char* protocol) const {
    return std::string(protocol) + (root.empty() ? "" : "s") +
           "://127.0.0.1:" + std::to_string(port) + "/";
  }

  std::uint16_t port;
  std::string root;
};

class CurlSmtp {
 public:
  CurlSmtp(const CurlPlace& place, const std::string& sender, const std::string& recipient);

  // Connects anew and says NOOP.
  void Connect();

  // Header and text. The connection and its login are made with the first one.
  void Send(std::string_view message);

 private:
  static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* rest);

  CurlHandle handle_;
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> recipients_;
  std::string_view rest_;
};

// Messages with one attachment, which libcurl encodes while it sends.
class CurlMime {
 public:
  CurlMime(const CurlPlace& place, const std::string& sender, const std::string& recipient);

  void Send(const std::string& text, const std::string& path);

 private:
  CurlHandle handle_;
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> recipients_;
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> fields_;
};

class CurlPop {
 public:
  explicit CurlPop(const CurlPlace& place);

  // Returns the number of bytes of all headers.
  std::size_t LoadHeaders(std::size_t count);
  // The first message of the mailbox.
  const std::string& LoadMessage();

 private:
  static std::size_t OnWrite(char* data, std::size_t size, std::size_t count, void* received);

  const std::string url_;
  CurlHandle handle_;
  std::string received_;
};

}  // namespace quillon::bench
