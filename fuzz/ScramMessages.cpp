// The two messages of a SCRAM server, one line each, to the client of RFC 7677, 3. Whoever does not
// know the password cannot sign another dialogue than the published one.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "KnownCrypto.h"
#include "MemoryFiles.h"
#include "sasl/ScramMechanism.h"
#include "sasl/ScramMessage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  static const quillon::fuzz::KnownCrypto crypto;
  static const quillon::Credentials credentials{"", "user", "pencil", ""};
  static const quillon::ConnectionFacts connection{};
  constexpr std::string_view kPublished =
      "r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,s=W22ZaJ0SNY7soEsUEjb6gQ==,i=4096";

  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto end = std::min(text.find('\n'), text.size());
  const auto first = text.substr(0, end);
  const auto last = text.substr(std::min(end + 1, text.size()));

  const auto read = quillon::ReadScramServerFirst(first, "r");
  if (read.failure.empty()) {
    Require(read.nonce.starts_with("r") && read.nonce.size() > 1 && !read.salt.empty());
    Require(read.iterations >= quillon::kFewestIterations &&
            read.iterations <= quillon::kMostIterations);
  }

  quillon::ScramMechanism mechanism(quillon::HashAlgorithm::kSha256,
                                    quillon::ScramBinding::kNotUsed,
                                    {credentials, connection, crypto});
  Require(!mechanism.Begin().value().Failed());
  const bool answered = !mechanism.Answer(first).Failed();
  const bool believed = !mechanism.Succeeded(last).Failed();
  Require(!believed || (answered && first == kPublished));
  Require(first != kPublished || answered);
  return 0;
}
