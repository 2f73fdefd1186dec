// What a server says in SCRAM (RFC 5802, 7), read strictly: one attribute after the other in their
// order, each once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillon {

// RFC 7677, 4, has servers ask for 4096 at least; a server that asks for less may be after a
// password that is easily guessed. The other end is a second's work.
inline constexpr std::uint32_t kFewestIterations = 4096;
inline constexpr std::uint32_t kMostIterations = 600'000;

// `failure` is a sentence when the message is none; then nothing else counts.
struct ScramServerFirst {
  std::string nonce;  // the client's with something behind it
  std::string salt;   // bytes
  std::uint32_t iterations = 0;
  std::string failure;
};

ScramServerFirst ReadScramServerFirst(std::string_view message, std::string_view clientNonce);

struct ScramServerFinal {
  std::string signature;  // bytes
  std::string error;      // instead of it, as the server says it
  std::string failure;
};

ScramServerFinal ReadScramServerFinal(std::string_view message);

}  // namespace quillon
