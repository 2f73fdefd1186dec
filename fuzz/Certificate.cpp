// Certificates: what is read of one lies within it, and a name of it matches by the rules alone.
#include "net/Certificate.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "MemoryFiles.h"
#include "core/Text.h"
#include "core/Utf8.h"
#include "net/HostName.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto certificate = quillon::ReadCertificate(bytes);
  if (!certificate) return 0;
  Require(bytes.find(certificate->publicKey) != std::string_view::npos);
  Require(quillon::IsUtf8(certificate->subject) && quillon::IsUtf8(certificate->issuer));
  for (const auto& name : certificate->dnsNames) {
    const bool matches = quillon::MatchesDnsName(name, "mail.example.com");
    const bool may = name.size() == 16 || quillon::EqualsIgnoreCase(name, "*.example.com");
    Require(!matches || may);
  }
  Require(certificate->keyBits >= 0 && certificate->keyBits <= 8192 * 8);
  return 0;
}
