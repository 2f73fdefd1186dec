#include <gtest/gtest.h>
#include <string>

#include "net/DomainLabels.h"

namespace quillon {
namespace {

// Compared with those of other programs.
TEST(DomainLabels, AreAsciiInTheEnd) {
  const struct {
    const char* domain;
    const char* ascii;
  } kCases[] = {
      {"Example.ORG", "Example.ORG"},
      {"bücher.example", "xn--bcher-kva.example"},
      {"BÜCHER.Example", "xn--bcher-kva.Example"},
      {"straße.de", "xn--strae-oqa.de"},
      {"пример.рф", "xn--e1afmkfd.xn--p1ai"},
      {"ПРИМЕР.РФ", "xn--e1afmkfd.xn--p1ai"},
      {"παράδειγμα.δοκιμή", "xn--hxajbheg2az3al.xn--jxalpdlp"},
      {"例え.テスト", "xn--r8jz45g.xn--zckzah"},
      {"ŁÓDŹ.pl", "xn--d-uga0v4h.pl"},
      {"他们为什么不说中文", "xn--ihqwcrb4cv8a8dqg056pqjye"},
      {"😀.example", "xn--e28h.example"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(AsciiDomain(test.domain).value_or("none"), test.ascii) << test.domain;
  }
}

TEST(DomainLabels, WhatDnsCannotHoldHasNone) {
  std::string longLabel;
  for (int count = 0; count < 100; ++count) longLabel += "ü";
  for (const auto& domain : {std::string("ü..de"), std::string(".ü"), longLabel + ".de",
                             std::string("\xFC.de"), std::string(1000000, '\xC3')}) {
    EXPECT_EQ(AsciiDomain(domain), std::nullopt);
  }
}

}  // namespace
}  // namespace quillon
