// What is read of certificates, and what is thought of chains of them.
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "net/Certificate.h"
#include "net/CertificateCheck.h"
#include "net/DerReader.h"
#include "platform/Platform.h"
#include "support/posix/TestCertificates.h"

namespace quillon {
namespace {

using namespace std::string_literals;
using testing::CertificateOrder;
using testing::Issue;
using testing::IssuedCertificate;
using testing::IssueRoot;
using testing::TestKey;

TEST(Certificate, FieldsAreRead) {
  const auto root = IssueRoot("Test Root");
  CertificateOrder order;
  order.commonName = "Gr\u00FC\u00DFe\r\nBcc: x";
  order.names = "DNS:a.example,DNS:*.b.example,email:x@example.com,IP:192.0.2.1,IP:::1";
  order.issuer = &root;
  order.key = TestKey::Rsa1024;
  order.digest = EVP_sha384();
  const auto read = ReadCertificate(Issue(order).Der());
  ASSERT_TRUE(read);
  EXPECT_EQ(read->subject, "Gr\u00FC\u00DFe  Bcc: x");
  EXPECT_EQ(read->issuer, "Test Root");
  EXPECT_EQ(read->dnsNames, (std::vector<std::string>{"a.example", "*.b.example"}));
  EXPECT_EQ(read->addresses,
            (std::vector<std::string>{"\xC0\0\x02\x01"s, std::string(15, '\0') + '\1'}));
  EXPECT_EQ(read->notAfter - read->notBefore, 31 * 86400);
  EXPECT_LT(std::abs(read->notBefore + 86400 - std::time(nullptr)), 600);
  EXPECT_EQ(read->keyType, KeyType::Rsa);
  EXPECT_EQ(read->keyBits, 1024);
  EXPECT_EQ(read->signatureDigest, SignatureDigest::Sha384);

  const auto other = ReadCertificate(root.Der());
  ASSERT_TRUE(other);
  EXPECT_EQ(other->keyType, KeyType::EllipticCurve);
  EXPECT_EQ(other->keyBits, 256);
  order.issuer = nullptr;
  order.key = TestKey::Ed25519;
  const auto edwards = ReadCertificate(Issue(order).Der());
  ASSERT_TRUE(edwards);
  EXPECT_EQ(edwards->signatureDigest, SignatureDigest::None);
  EXPECT_EQ(edwards->keyType, KeyType::Edwards);
}

TEST(Certificate, BytesThatAreNoneAreRefused) {
  const auto der = Issue({}).Der();
  for (std::size_t size = 0; size < der.size(); ++size) {
    EXPECT_FALSE(ReadCertificate(der.substr(0, size))) << size;
  }
  EXPECT_FALSE(ReadCertificate(der + '\0'));
  // A name that says that it goes on behind its extension.
  auto longer = der;
  longer[longer.find("\x82\x10mail") + 1] = 0x11;
  EXPECT_FALSE(ReadCertificate(longer));
  // A second list of names.
  CertificateOrder order;
  order.extensions = {{"subjectAltName", "DNS:evil.example"}};
  EXPECT_FALSE(ReadCertificate(Issue(order).Der()));
}

TEST(DerReader, TakesOneFormOfEachLength) {
  struct Row {
    std::string bytes;
    bool taken;
  };
  const Row rows[] = {
      {"\x04\x01x", true},
      {"\x04\x02x", false},
      {"\x04\x81\x01x", false},                            // fits into the short form
      {"\x04\x81\x80" + std::string(128, 'x'), true},      //
      {"\x04\x82\0\x80"s + std::string(128, 'x'), false},  // a leading zero
      {"\x04\x80x\0\0"s, false},                           // no length
      {"\x04\x84\xFF\xFF\xFF\xFFx", false},                //
      {"\x04\x85\x01\x01\x01\x01\x01x", false},            //
      {"\x1F\x81\x01x", false},                            // a long tag
      {"\x04", false},
  };
  for (const auto& row : rows) {
    DerElement element;
    EXPECT_EQ(DerReader(row.bytes).Take(element), row.taken) << ::testing::PrintToString(row.bytes);
  }
}

// The certificates of one small world: a root that is trusted, an issuer below it, and a foreign
// root.
class CertificateCheck : public ::testing::Test {
 protected:
  IssuedCertificate Below(const IssuedCertificate& issuer, CertificateOrder order = {}) {
    order.issuer = &issuer;
    return Issue(order);
  }
  IssuedCertificate IssuerBelow(const IssuedCertificate& above, CertificateOrder order = {}) {
    order.commonName = "Test Issuer";
    order.names.clear();
    order.extensions.insert(order.extensions.begin(), {"basicConstraints", "critical,CA:TRUE"});
    return Below(above, order);
  }
  // `own` and the issuer.
  std::vector<std::string> Chain(const CertificateOrder& order) {
    return {Below(issuer_, order).Der(), issuer_.Der()};
  }
  CertificateVerdict Check(const std::vector<std::string>& chain, const std::string& host,
                           const std::string& pin = {}) {
    CertificateDemand demand{host, ReadPin(pin), {false, root_.Der()}};
    demand.trust.revocation = revocation_;
    return CheckCertificate(*library_, *crypto_, chain, demand);
  }

  std::unique_ptr<TlsLibrary> library_ = MakeTlsLibrary();
  std::unique_ptr<Crypto> crypto_ = MakeCrypto();
  IssuedCertificate root_ = IssueRoot("Test Root");
  IssuedCertificate foreign_ = IssueRoot("Foreign Root");
  IssuedCertificate issuer_ = IssuerBelow(root_);
  bool revocation_ = false;
};

TEST_F(CertificateCheck, EachFaultOfACertificateIsFound) {
  using Fault = CertificateFault;
  struct Row {
    const char* what;
    CertificateOrder order;
    Fault fault;
  };
  const auto with = [](const char* extension, const char* value) {
    CertificateOrder order;
    order.extensions = {{extension, value}};
    return order;
  };
  const auto named = [](const char* names) {
    CertificateOrder order;
    order.names = names;
    return order;
  };
  const Row rows[] = {
      {"good", {}, Fault::None},
      {"for servers", with("extendedKeyUsage", "serverAuth"), Fault::None},
      {"wildcard", named("DNS:*.example.com"), Fault::None},
      {"rsa", {.key = TestKey::Rsa2048}, Fault::None},
      {"common name only", named(""), Fault::WrongHost},
      {"other host", named("DNS:other.example.com"), Fault::WrongHost},
      {"expired", {.firstDay = -30, .lastDay = -1}, Fault::Expired},
      {"future", {.firstDay = 1, .lastDay = 30}, Fault::NotYetValid},
      {"for clients", with("extendedKeyUsage", "clientAuth"), Fault::WrongUsage},
      {"unknown critical", with("1.3.6.1.4.1.99999.1", "critical,DER:0500"), Fault::Refused},
      {"short key", {.key = TestKey::Rsa1024}, Fault::WeakKey},
      {"SHA-1", {.digest = EVP_sha1()}, Fault::WeakSignature},
  };
  for (const auto& row : rows) {
    const auto verdict = Check(Chain(row.order), "mail.example.com");
    EXPECT_EQ(verdict.fault, row.fault) << row.what << ": " << verdict.text;
    EXPECT_EQ(verdict.text.empty(), row.fault == Fault::None);
  }
  EXPECT_EQ(Check(Chain(named("IP:127.0.0.1")), "127.0.0.1").fault, Fault::None);
  EXPECT_EQ(Check(Chain(named("DNS:127.0.0.1")), "127.0.0.1").fault, Fault::WrongHost);
  revocation_ = true;
  EXPECT_EQ(Check(Chain({}), "mail.example.com").fault, Fault::RevocationUnknown);
}

TEST_F(CertificateCheck, EachFaultOfAChainIsFound) {
  using Fault = CertificateFault;
  const auto good = Below(issuer_);
  auto forged = good.Der();
  forged.back() = static_cast<char>(forged.back() ^ 1);
  const auto constrained = IssuerBelow(
      root_, {.extensions = {{"nameConstraints", "critical,permitted;DNS:allowed.example"}}});
  const auto old = IssuerBelow(root_, {.firstDay = -30, .lastDay = -1});
  const auto weak = IssuerBelow(root_, {.digest = EVP_sha1()});
  const auto notIssuer = Below(issuer_, {.commonName = "leaf",
                                         .names = "DNS:leaf.example.com",
                                         .extensions = {{"basicConstraints", "CA:FALSE"}}});
  const auto self = Issue({});
  const auto rootOfSameName = IssueRoot("Test Root");
  struct Row {
    const char* what;
    std::vector<std::string> chain;
    Fault fault;
  };
  const Row rows[] = {
      {"shuffled, with others",
       {good.Der(), foreign_.Der(), root_.Der(), issuer_.Der()},
       Fault::None},
      {"directly below", {Below(root_).Der()}, Fault::None},
      {"nothing", {}, Fault::Missing},
      {"no certificate", {"mail.example.com"}, Fault::Unreadable},
      {"incomplete", {good.Der()}, Fault::Incomplete},
      {"self-signed", {self.Der()}, Fault::SelfSigned},
      {"unknown root sent", {Below(foreign_).Der(), foreign_.Der()}, Fault::UnknownIssuer},
      {"forged", {forged, issuer_.Der()}, Fault::BadSignature},
      {"root's name", {Below(rootOfSameName).Der(), rootOfSameName.Der()}, Fault::BadSignature},
      {"not an issuer",
       {Below(notIssuer).Der(), notIssuer.Der(), issuer_.Der()},
       Fault::WrongIssuer},
      {"name not permitted", {Below(constrained).Der(), constrained.Der()}, Fault::WrongIssuer},
      {"expired issuer", {Below(old).Der(), old.Der()}, Fault::Expired},
      {"weak issuer", {Below(weak).Der(), weak.Der()}, Fault::WeakSignature},
  };
  for (const auto& row : rows) {
    const auto verdict = Check(row.chain, "mail.example.com");
    EXPECT_EQ(verdict.fault, row.fault) << row.what << ": " << verdict.text;
  }
}

TEST_F(CertificateCheck, APinnedCertificateAndNoOtherIsTaken) {
  using Fault = CertificateFault;
  const auto self = Issue({.names = "", .key = TestKey::Rsa1024, .firstDay = -9, .lastDay = -1});
  const auto pin = CertificatePinText(*crypto_, self.Der());
  const auto keyPin = "key:" + CertificatePinText(*crypto_, ReadCertificate(self.Der())->publicKey);
  EXPECT_EQ(Check({self.Der()}, "inside.example", pin).fault, Fault::None);
  EXPECT_EQ(Check({self.Der()}, "inside.example", keyPin).fault, Fault::None);
  EXPECT_EQ(Check({self.Der()}, "inside.example", pin.substr(0, 63)).fault, Fault::SelfSigned);
  // Good by every other rule.
  const auto refused = Check(Chain({}), "mail.example.com", pin);
  EXPECT_EQ(refused.fault, Fault::WrongPin);
  EXPECT_EQ(Check(Chain({}), "mail.example.com", keyPin).fault, Fault::WrongPin);
  EXPECT_FALSE(ReadPin("key:" + pin + "0") || ReadPin("x" + pin.substr(1)) || ReadPin("key:"));
}

TEST_F(CertificateCheck, TheVerdictSaysWhatAnAdministratorNeeds) {
  const auto chain = Chain({.names = "DNS:a.example,DNS:b.example"});
  EXPECT_THAT(
      Check(chain, "mail.example.com").text,
      ::testing::MatchesRegex(
          "The certificate of \"mail.example.com\" is for another host. It is for a.example, "
          "b.example \\(\"mail.example.com\"\\), was issued by \"Test Issuer\" and is valid "
          "from 20..-..-.. to 20..-..-... Connect to a name .* Its pin is [0-9a-f]{64}\\."));
}

}  // namespace
}  // namespace quillon
