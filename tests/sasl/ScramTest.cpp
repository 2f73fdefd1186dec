#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "LoginWorld.h"
#include "sasl/ScramMessage.h"

namespace quillon {
namespace {

using namespace std::string_view_literals;
using testing::LoginWorld;

constexpr auto kNonce1 = "fyko+d2lbbFgONRv9qkxdawL"sv;
constexpr auto kFirst1 = "r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,s=QSXCR+Q6sek8bf92,i=4096"sv;
constexpr auto kNonce256 = "rOprNGfwEbeRWgbNEkqO"sv;
constexpr auto kFirst256 =
    "r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,s=W22ZaJ0SNY7soEsUEjb6gQ==,i=4096"sv;
constexpr auto kSignature256 = "v=6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4="sv;

// RFC 5802, 5, and RFC 7677, 3. The others have been computed with Python's hashlib and hmac.
TEST(Scram, Logins) {
  const struct {
    std::string_view name;
    std::string_view nonce;
    Credentials credentials;
    std::string_view binding;
    std::vector<std::string> offered;
    std::string_view clientFirst;
    std::string_view serverFirst;
    std::string_view proof;
    std::string_view signature;
  } kCases[] = {
      {"SCRAM-SHA-1",
       kNonce1,
       {"", "user", "pencil", ""},
       "",
       {},
       "n,,n=user,r=fyko+d2lbbFgONRv9qkxdawL",
       kFirst1,
       "c=biws,r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,p=v0X8v3Bz2T0CJGbJQyF0X+HI4Ts=",
       "v=rmF9pqV8S7suAoZWja4dJRkFsKQ="},
      {"SCRAM-SHA-256",
       kNonce256,
       {"", "user", "pencil", ""},
       "",
       {},
       "n,,n=user,r=rOprNGfwEbeRWgbNEkqO",
       kFirst256,
       "c=biws,r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,"
       "p=dHzbZapWIk4jUhN+Ute9ytag9zjfMHgsqmmiz7AndVQ=",
       kSignature256},
      {"SCRAM-SHA-1-PLUS",
       kNonce1,
       {"", "user", "pencil", ""},
       "\0\1\xFF"sv,
       {},
       "p=tls-server-end-point,,n=user,r=fyko+d2lbbFgONRv9qkxdawL",
       kFirst1,
       "c=cD10bHMtc2VydmVyLWVuZC1wb2ludCwsAAH/,r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,"
       "p=wy7d93yO8TecYA4pwWEpmV0T1tQ=",
       "v=jCC2O7VReuboJI4iMHyry7Laowg="},
      {"SCRAM-SHA-256-PLUS",
       kNonce256,
       {"", "user", "pencil", ""},
       "\0\1\xFF"sv,
       {},
       "p=tls-server-end-point,,n=user,r=rOprNGfwEbeRWgbNEkqO",
       kFirst256,
       "c=cD10bHMtc2VydmVyLWVuZC1wb2ludCwsAAH/,"
       "r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,"
       "p=PUmc7jKJUXyp8iSqZ8Pc2j5NTa5+JocFDZ1HOzyGcDU=",
       "v=QW2OrrfKGDtQbsQnXDjCA+BWLcHc2tTnphgUm4FbQeM="},
      // The client could bind the channel and the server offers nothing of it.
      {"SCRAM-SHA-256",
       kNonce256,
       {"", "us=er,", "p\xC3\xA4ssword,=", ""},
       "\0\1\xFF"sv,
       {"PLAIN"},
       "y,,n=us=3Der=2C,r=rOprNGfwEbeRWgbNEkqO",
       kFirst256,
       "c=eSws,r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,"
       "p=iLRBvNje+ayg5aOtdG1+pbnGpGw/x1IAioWVlZQFUiY=",
       "v=IeZqDDfRULeMLsWT4cJWWBehNgIqxLUtTv00XvSfs1I="},
  };
  for (const auto& test : kCases) {
    for (const bool atSuccess : {false, true}) {
      LoginWorld world(test.nonce);
      world.credentials = test.credentials;
      if (!test.binding.empty()) {
        world.connection.binding = {"tls-server-end-point", std::string(test.binding)};
      }
      const auto mechanism = world.Make(test.name, test.offered);
      EXPECT_EQ(test.clientFirst, mechanism->Begin().value().response);
      EXPECT_EQ(test.proof, mechanism->Answer(test.serverFirst).response);
      const auto last =
          atSuccess ? mechanism->Succeeded(test.signature) : mechanism->Answer(test.signature);
      EXPECT_EQ("", last.response);
      EXPECT_EQ("", last.failure);
      EXPECT_EQ("", mechanism->Succeeded({}).failure);
    }
  }
}

// Not "y", which the server would take for somebody in between.
TEST(Scram, LeavesBindingOutWhereTheServerOffersItAndTheSettingDoesNot) {
  LoginWorld world;
  world.connection.binding = {"tls-server-end-point", "data"};
  const auto mechanism = world.Make("SCRAM-SHA-256", {"scram-sha-1-plus"});
  EXPECT_EQ("n,,n=user,r=rOprNGfwEbeRWgbNEkqO", mechanism->Begin().value().response);
}

TEST(Scram, RefusesFirstMessages) {
  constexpr auto kOther = "another login"sv;
  constexpr auto kMalformed = "malformed"sv;
  constexpr auto kCount = "iterations"sv;
  const struct {
    std::string message;  // with N for the client's nonce
    std::string_view failure;
  } kCases[] = {
      {"r=N,s=QUJD,i=4096", kOther},
      {"r=x,s=QUJD,i=4096", kOther},
      {"r=xN,s=QUJD,i=4096", kOther},
      {"r=,s=QUJD,i=4096", kOther},
      {"r=Nx,s=QUJD,i=0", kCount},
      {"r=Nx,s=QUJD,i=4095", kCount},
      {"r=Nx,s=QUJD,i=600001", kCount},
      {"r=Nx,s=QUJD,i=2147483648", kCount},
      {"r=Nx,s=QUJD,i=99999999999999999999", kCount},
      {"r=Nx,s=QUJD,i=-4096", kCount},
      {"r=Nx,s=QUJD,i=04096", kCount},
      {"r=Nx,s=QUJD,i=4096 ", kCount},
      {"r=Nx,s=QUJD,i=", kMalformed},
      {"r=Nx,s=QUJD", kMalformed},
      {"r=Nx,i=4096", kMalformed},
      {"s=QUJD,i=4096", kMalformed},
      {"i=4096,s=QUJD,r=Nx", kMalformed},
      {"r=Nx,r=Nx,s=QUJD,i=4096", kMalformed},
      {"r=Nx,s=QUJD,i=4096,i=4096", kMalformed},
      {"r=Nx,s=QUJD,i=4096,m=x", kMalformed},
      {"r=Nx,s=QUJD,i=4096,", kMalformed},
      {"r=Nx,s=QUJD,i=4096,x", kMalformed},
      {"r=Nx,s=QUJD,i=4096,x=", kMalformed},
      {"r=N\x7F,s=QUJD,i=4096", kMalformed},
      {"r=Nx,s=,i=4096", kMalformed},
      {"r=Nx,s=QUJ,i=4096", kMalformed},
      {"m=x,r=Nx,s=QUJD,i=4096", "extension"},
      {"e=other-error", kMalformed},
      {"v=QUJD", kMalformed},
      {"", kMalformed},
      {std::string(1 << 20, 'r'), kMalformed},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.message.substr(0, 80));
    LoginWorld world;
    const auto mechanism = world.Make("SCRAM-SHA-256");
    mechanism->Begin();
    auto message = test.message;
    if (const auto place = message.find('N'); place != std::string::npos) {
      message.replace(place, 1, kNonce256);
    }
    const auto step = mechanism->Answer(message);
    EXPECT_NE(std::string::npos, step.failure.find(test.failure)) << step.failure;
    EXPECT_TRUE(mechanism->Succeeded(kSignature256).Failed());
  }
}

TEST(Scram, RefusesServersThatDoNotKnowThePassword) {
  const struct {
    std::string message;
    std::string_view failure;
  } kCases[] = {
      {"v=7rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4=", "does not know"},
      {"v=6rriTRBi23WpRR/wtup+mMhUZUk=", "does not know"},
      {"v=", "malformed"},
      {"v=*", "malformed"},
      {std::string(kSignature256) + ",v=6rri", "malformed"},
      {"e=invalid-proof", "refused the SCRAM login: invalid-proof"},
      {std::string(kFirst256), "malformed"},
      {"", "malformed"},
  };
  for (const auto& test : kCases) {
    for (const bool atSuccess : {false, true}) {
      LoginWorld world;
      const auto mechanism = world.Make("SCRAM-SHA-256");
      mechanism->Begin();
      mechanism->Answer(kFirst256);
      const auto step =
          atSuccess ? mechanism->Succeeded(test.message) : mechanism->Answer(test.message);
      // Success without a word of proof has words of its own.
      const auto expected = atSuccess && test.message.empty() ? "has not shown" : test.failure;
      EXPECT_NE(std::string::npos, step.failure.find(expected)) << step.failure;
      EXPECT_TRUE(mechanism->Succeeded(kSignature256).Failed());
    }
  }
  LoginWorld world;
  const auto mechanism = world.Make("SCRAM-SHA-256");
  mechanism->Begin();
  EXPECT_FALSE(mechanism->Answer(kFirst256).Failed());
  EXPECT_FALSE(mechanism->Answer(std::string(kSignature256) + ",x=extension").Failed());
  EXPECT_TRUE(mechanism->Answer({}).Failed());
  EXPECT_TRUE(mechanism->Succeeded({}).Failed());
}

}  // namespace
}  // namespace quillon
