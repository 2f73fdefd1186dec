// Names and addresses in certificates against the host that was meant.
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "net/HostName.h"

namespace quillon {
namespace {

using namespace std::string_literals;

TEST(HostName, MatchesNamesOfCertificates) {
  struct Row {
    std::string pattern;
    std::string host;
    bool matches;
  };
  const Row rows[] = {
      {"mail.example.com", "mail.example.com", true},
      {"MAIL.example.COM", "mail.EXAMPLE.com", true},
      {"mail.example.com", "mail.example.com.", true},
      {"mail.example.com.", "mail.example.com", false},
      {"mail.example.com", "mail.example.org", false},
      {"example.com", "mail.example.com", false},
      {"mailhost", "mailhost", true},
      {"mail_1.example.com", "mail_1.example.com", true},
      {"xn--bcher-kva.example", "xn--bcher-kva.example", true},
      {"b\u00FCcher.example", "b\u00FCcher.example", false},
      {"*.example.com", "mail.example.com", true},
      {"*.example.com", "xn--bcher-kva.example.com", true},
      {"*.example.com", "a.mail.example.com", false},
      {"*.example.com", "example.com", false},
      {"*.example.com", ".example.com", false},
      {"*.com", "example.com", false},
      {"*", "mailhost", false},
      {"*.*.com", "mail.example.com", false},
      {"mail.*.com", "mail.example.com", false},
      {"ma*.example.com", "mail.example.com", false},
      {"**.example.com", "mail.example.com", false},
      {"mail.example.com\0.evil.example"s, "mail.example.com", false},
      {"mail.example.com"s, "mail.example.com\0.evil.example"s, false},
      {"mail..example.com", "mail..example.com", false},
      {"mail.example.com", "mail.example.com..", false},
      {"mail example.com", "mail example.com", false},
      {"", "", false},
      {"", ".", false},
      // An address is no name, however it is written.
      {"127.0.0.1", "127.0.0.1", false},
      {"*.0.0.1", "127.0.0.1", false},
      {"127.1", "127.1", false},
      {std::string(63, 'a') + ".example", std::string(63, 'a') + ".example", true},
      {std::string(64, 'a') + ".example", std::string(64, 'a') + ".example", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(MatchesDnsName(row.pattern, row.host), row.matches) << row.pattern << ' ' << row.host;
  }
}

TEST(HostName, ReadsAddresses) {
  const auto v6 = [](std::string_view front, std::string_view back) {
    return std::string(front) + std::string(16 - front.size() - back.size(), '\0') +
           std::string(back);
  };
  struct Row {
    std::string host;
    std::string bytes;
  };
  const Row rows[] = {
      {"192.0.2.255", "\xC0\0\x02\xFF"s},
      {"192.0.2.256", ""},
      {"192.0.2", ""},
      {"192.0.2.1.", ""},
      {"192.0..1", ""},
      {"192.0.02.1", ""},
      {"0x7f.0.0.1", ""},
      {"+1.0.0.1", ""},
      {"::", v6("", "")},
      {"::1", v6("", "\x01")},
      {"[::1]", v6("", "\x01")},
      {"fe80::1%eth0", v6("\xFE\x80", "\x01")},
      {"2001:DB8::", v6("\x20\x01\x0D\xB8", "")},
      {"::ffff:192.0.2.1", v6("", "\xFF\xFF\xC0\0\x02\x01"s)},
      {"1:2:3:4:5:6:7:8", "\0\1\0\2\0\3\0\4\0\5\0\6\0\7\0\10"s},
      {"1:2:3:4:5:6:192.0.2.1", "\0\1\0\2\0\3\0\4\0\5\0\6\xC0\0\x02\x01"s},
      {"1:2:3:4:5:6:7", ""},
      {"1:2:3:4:5:6:7:8:9", ""},
      {"1:2:3:4:5:6:7:192.0.2.1", ""},
      {"1:2:3:4::5:6:7:8", ""},
      {"1::2::3", ""},
      {":::", ""},
      {":1", ""},
      {"1:", ""},
      {"12345::", ""},
      {"1.2.3.4::", ""},
      {"g::1", ""},
      {"[]", ""},
      {"", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(AddressBytes(row.host), row.bytes) << row.host;
}

TEST(HostName, AddressesAreComparedWithAddressesOnly) {
  EXPECT_TRUE(MatchesHost({}, {"\x7F\0\0\1"s}, "127.0.0.1"));
  EXPECT_FALSE(MatchesHost({"127.0.0.1"}, {}, "127.0.0.1"));
  EXPECT_FALSE(MatchesHost({"mail.example.com"}, {"\x7F\0\0\1"s}, "127.0.0.2"));
  EXPECT_TRUE(MatchesHost({"a.example.com", "*.example.com"}, {}, "mail.example.com"));
}

TEST(HostName, IsToldToTheServerUnlessItIsAnAddress) {
  EXPECT_EQ(ServerNameFor("mail.example.com."), "mail.example.com");
  for (const auto* host : {"192.0.2.1", "[::1]", "::1", "127.1", "b\u00FCcher.example", ""}) {
    EXPECT_EQ(ServerNameFor(host), "") << host;
  }
}

}  // namespace
}  // namespace quillon
