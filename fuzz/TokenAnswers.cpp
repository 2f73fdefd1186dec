// What a token endpoint answers: a status by the first byte, then the body. Either there is a token
// that fits into a login, or a failure that can be shown.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "oauth/TokenAnswer.h"

namespace {

bool Visible(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 127; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  constexpr std::string_view kSecret = "S3cr3t";
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const bool good = text.empty() || text.front() != '4';
  const std::string body(text.substr(std::min<std::size_t>(1, size)));
  const auto read = quillon::ReadTokenAnswer({good ? 200 : 400, body, ""}, "https://host/token",
                                             {std::string(kSecret)});
  Require(read.failure.empty() == !read.accessToken.empty());
  Require(good || !read.failure.empty());
  Require(Visible(read.accessToken) && Visible(read.refreshToken));
  Require(read.lifetime <= 24U * 60 * 60 * 1000);
  Require(read.failure.size() < 600 && read.failure.find(kSecret) == std::string::npos);
  Require(std::none_of(read.failure.begin(), read.failure.end(),
                       [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }));
  return 0;
}
