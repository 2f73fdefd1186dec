#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <string_view>

#include "core/HexDigit.h"
#include "platform/Platform.h"

namespace quillon {
namespace {

using namespace std::string_view_literals;

constexpr auto kMd5 = HashAlgorithm::kMd5;
constexpr auto kSha1 = HashAlgorithm::kSha1;
constexpr auto kSha256 = HashAlgorithm::kSha256;
constexpr auto kSha512 = HashAlgorithm::kSha512;

// RFC 1321 and FIPS 180.
TEST(Crypto, Digests) {
  const struct {
    HashAlgorithm hash;
    std::string_view text;
    std::string_view digest;
  } kCases[] = {
      {kMd5, "abc", "900150983cd24fb0d6963f7d28e17f72"},
      {kMd5, {}, "d41d8cd98f00b204e9800998ecf8427e"},
      {kSha1, "abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {kSha256, "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {kSha512, "abc",
       "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
       "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
  };
  const auto crypto = MakeCrypto();
  for (const auto& test : kCases) {
    EXPECT_EQ(test.digest, HexText(crypto->Digest(test.hash, test.text)));
  }
}

// RFC 2202 and 4231; a key that is longer than a block, and none.
TEST(Crypto, Hmac) {
  const std::string longKey(131, '\xAA');
  constexpr auto kLongText = "Test Using Larger Than Block-Size Key - Hash Key First"sv;
  const struct {
    HashAlgorithm hash;
    std::string_view key;
    std::string_view text;
    std::string_view code;
  } kCases[] = {
      {kMd5, "Jefe", "what do ya want for nothing?", "750c783e6ab0b503eaa86e310a5db738"},
      {kSha1, "Jefe", "what do ya want for nothing?", "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79"},
      {kSha1, {}, {}, "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d"},
      {kSha256, "Jefe", "what do ya want for nothing?",
       "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
      {kSha256, longKey, kLongText,
       "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
      {kSha512, longKey, kLongText,
       "80b24263c7c1a3ebb71493c1dd7be8b49b46d1f41b4aeec1121b013783f8f352"
       "6b56d037e05f2598bd0fd2215d6a1e5295e64f73f63f0aec8b915a985d786598"},
  };
  const auto crypto = MakeCrypto();
  for (const auto& test : kCases) {
    EXPECT_EQ(test.code, HexText(crypto->Hmac(test.hash, test.key, test.text)));
  }
}

// RFC 6070, and RFC 7914, 11, for SHA-256.
TEST(Crypto, Pbkdf2) {
  const struct {
    HashAlgorithm hash;
    std::string_view password;
    std::string_view salt;
    std::uint32_t iterations;
    std::string_view key;
  } kCases[] = {
      {kSha1, "password", "salt", 1, "0c60c80f961f0e71f3a9b524af6012062fe037a6"},
      {kSha1, "password", "salt", 2, "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957"},
      {kSha1, "password", "salt", 4096, "4b007901b765489abead49d926f721d065a429c1"},
      {kSha1, "passwordPASSWORDpassword", "saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096,
       "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038"},
      {kSha1, "pass\0word"sv, "sa\0lt"sv, 4096, "56fa6aa75548099dcc37d7f03425e0c3"},
      {kSha256, "passwd", "salt", 1,
       "55ac046e56e3089fec1691c22544b605f94185216dde0465e68b9d57c20dacbc"
       "49ca9cccf179b645991664b39d77ef317c71b845b1e30bd509112041d3a19783"},
  };
  const auto crypto = MakeCrypto();
  for (const auto& test : kCases) {
    EXPECT_EQ(test.key, HexText(crypto->Pbkdf2(test.hash, test.password, test.salt, test.iterations,
                                               test.key.size() / 2)));
  }
}

TEST(Crypto, RandomBytesDoNotRepeat) {
  const auto crypto = MakeCrypto();
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) seen.insert(crypto->RandomBytes(16));
  EXPECT_EQ(1000U, seen.size());
  EXPECT_EQ(16U, seen.begin()->size());
}

TEST(Crypto, EqualSecrets) {
  EXPECT_TRUE(EqualSecrets("", ""));
  EXPECT_TRUE(EqualSecrets("a\0c"sv, "a\0c"sv));
  for (const auto other : {"a\0b"sv, "b\0c"sv, "a\0"sv, "a\0c\0"sv, ""sv}) {
    EXPECT_FALSE(EqualSecrets("a\0c"sv, other));
  }
}

}  // namespace
}  // namespace quillon
