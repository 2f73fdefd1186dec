#include "internet/ServerSection.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "codec/TextEncoder.h"
#include "core/Text.h"
#include "internet/Address.h"
#include "net/CertificateCheck.h"
#include "oauth/ProviderAnswer.h"
#include "sasl/Choice.h"

namespace quillon {

namespace {

bool SetText(std::optional<std::string>& member, const std::string& value) {
  member = value;
  return true;
}

// A port behind a colon has a key of its own; an IPv6 address has more colons.
bool SetHost(std::optional<std::string>& member, const std::string& value) {
  const bool plain = std::all_of(value.begin(), value.end(), [](char c) {
    return static_cast<unsigned char>(c) > ' ' && c != '/' && c != '\\' && c != '@';
  });
  if (!plain || std::count(value.begin(), value.end(), ':') == 1) return false;
  return SetText(member, value);
}

bool SetPort(std::optional<std::uint16_t>& member, const std::string& value) {
  unsigned port = 0;
  const char* const end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, port);
  if (error != std::errc() || stop != end || port == 0 ||
      port > std::numeric_limits<std::uint16_t>::max()) {
    return false;
  }
  member = static_cast<std::uint16_t>(port);
  return true;
}

bool SetSecurity(std::optional<ConnectionSecurity>& member, const std::string& value) {
  using Security = ConnectionSecurity;
  constexpr std::pair<std::string_view, Security> kNames[] = {
      {"none", Security::None},
      {"starttls-if-offered", Security::StartTlsIfOffered},
      {"starttls", Security::StartTls},
      {"tls", Security::Tls},
  };
  for (const auto& [name, security] : kNames) {
    if (!EqualsIgnoreCase(name, value)) continue;
    member = security;
    return true;
  }
  return false;
}

// The words of the other flags of the file, but nothing else: a typing error may not mean "off".
bool SetFlag(std::optional<bool>& member, const std::string& value) {
  constexpr std::pair<std::string_view, bool> kWords[] = {
      {"TRUE", true},   {"YES", true}, {"-1", true}, {"1", true},
      {"FALSE", false}, {"NO", false}, {"0", false},
  };
  for (const auto& [word, meaning] : kWords) {
    if (!EqualsIgnoreCase(word, value)) continue;
    member = meaning;
    return true;
  }
  return false;
}

bool SetSender(std::optional<std::string>& member, const std::string& value) {
  return IsSenderAddress(value) && SetText(member, value);
}

bool SetPin(std::optional<std::string>& member, const std::string& value) {
  return ReadPin(value) && SetText(member, value);
}

bool SetUrl(std::string& member, const std::string& value) {
  member = value;
  return IsProviderUrl(value);
}

bool SetAuthentication(ServerSection& section, const std::string& value) {
  section.authentication = ReadMechanismNames(value);
  return section.authentication.has_value();
}

constexpr std::string_view kHost = "a host name or address, without a port";
constexpr std::string_view kPort = "a number from 1 to 65535";
constexpr std::string_view kSecurity = "one of none, starttls-if-offered, starttls and tls";
constexpr std::string_view kFlag = "TRUE or FALSE";
constexpr std::string_view kUrl = "an address that begins with https://";
constexpr std::string_view kAnyText = "any text";

using S = ServerSection;
using V = const std::string&;

constexpr ServerKey kKeys[] = {
    {"SMTPHost", false, kHost, [](S& s, V v) { return SetHost(s.smtp.host, v); }},
    {"SMTPPort", false, kPort, [](S& s, V v) { return SetPort(s.smtp.port, v); }},
    {"SMTPSecurity", false, kSecurity, [](S& s, V v) { return SetSecurity(s.smtp.security, v); }},
    {"SMTPUser", false, kAnyText, [](S& s, V v) { return SetText(s.smtp.user, v); }},
    {"SMTPPassword", true, kAnyText, [](S& s, V v) { return SetText(s.smtp.password, v); }},
    {"SMTPSender", false, "an address such as scripts@example.com",
     [](S& s, V v) { return SetSender(s.smtpSender, v); }},
    {"POPHost", false, kHost, [](S& s, V v) { return SetHost(s.pop.host, v); }},
    {"POPPort", false, kPort, [](S& s, V v) { return SetPort(s.pop.port, v); }},
    {"POPSecurity", false, kSecurity, [](S& s, V v) { return SetSecurity(s.pop.security, v); }},
    {"POPUser", false, kAnyText, [](S& s, V v) { return SetText(s.pop.user, v); }},
    {"POPPassword", true, kAnyText, [](S& s, V v) { return SetText(s.pop.password, v); }},
    {"Authentication", false, "a list of known login methods, such as PLAIN LOGIN",
     SetAuthentication},
    {"PlainTextLogin", false, kFlag, [](S& s, V v) { return SetFlag(s.plainTextLogin, v); }},
    {"Extensions", false, kFlag, [](S& s, V v) { return SetFlag(s.extensions, v); }},
    {"DSN", false, kFlag, [](S& s, V v) { return SetFlag(s.deliveryStatus, v); }},
    {"DetailedErrors", false, kFlag, [](S& s, V v) { return SetFlag(s.detailedErrors, v); }},
    {"RawHeaders", false, kFlag, [](S& s, V v) { return SetFlag(s.rawHeaders, v); }},
    {"Charset", false, "auto or the name of a character set, such as utf-8",
     [](S& s, V v) { return TextEncoder::Knows(v) && SetText(s.charset, v); }},
    {"ReplaceCharacters", false, kFlag, [](S& s, V v) { return SetFlag(s.replaceCharacters, v); }},
    {"ModernHeaders", false, kFlag, [](S& s, V v) { return SetFlag(s.modernHeaders, v); }},
    {"ExpandTnef", false, kFlag, [](S& s, V v) { return SetFlag(s.expandTnef, v); }},
    {"TrackUnread", false, kFlag, [](S& s, V v) { return SetFlag(s.trackUnread, v); }},
    {"Pin", false, "64 hexadecimal digits, with or without \"key:\" in front",
     [](S& s, V v) { return SetPin(s.pin, v); }},
    {"Revocation", false, kFlag, [](S& s, V v) { return SetFlag(s.revocation, v); }},
    {"ClientCertificate", false, kAnyText,
     [](S& s, V v) { return SetText(s.clientCertificate, v); }},
    {"TokenURL", false, kUrl, [](S& s, V v) { return SetUrl(s.oauth.tokenUrl, v); }},
    {"DeviceURL", false, kUrl, [](S& s, V v) { return SetUrl(s.oauth.deviceUrl, v); }},
    {"ClientId", false, kAnyText, [](S& s, V v) { return !(s.oauth.clientId = v).empty(); }},
    {"ClientSecret", true, kAnyText, [](S& s, V v) { return !(s.oauth.clientSecret = v).empty(); }},
    {"RefreshToken", true, kAnyText, [](S& s, V v) { return !(s.oauth.refreshToken = v).empty(); }},
    {"Scope", false, kAnyText, [](S& s, V v) { return !(s.oauth.scope = v).empty(); }},
};

}  // namespace

std::span<const ServerKey> ServerKeys() {
  return kKeys;
}

const ServerKey* FindServerKey(std::string_view name) {
  const auto* const found =
      std::find_if(std::begin(kKeys), std::end(kKeys),
                   [&](const ServerKey& key) { return EqualsIgnoreCase(key.name, name); });
  return found == std::end(kKeys) ? nullptr : found;
}

}  // namespace quillon
