#include "net/HostName.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

#include "core/HexDigit.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kMaxName = 253;
constexpr std::size_t kMaxLabel = 63;
constexpr std::size_t kIPv6Size = 16;

bool IsDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The part up to the mark, which goes with it.
std::string_view TakePart(std::string_view& text, char mark) {
  const auto end = text.find(mark);
  const auto part = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return part;
}

// Four decimal numbers, without the shorter and octal forms that some systems understand.
std::string IPv4Bytes(std::string_view text) {
  std::string bytes;
  if (std::count(text.begin(), text.end(), '.') != 3) return {};
  for (int i = 0; i < 4; ++i) {
    const auto part = TakePart(text, '.');
    unsigned value = 0;
    std::from_chars(part.data(), part.data() + part.size(), value);
    if (!IsDigits(part) || part.size() > 3 || value > 255) return {};
    if (part.size() > 1 && part[0] == '0') return {};
    bytes += static_cast<char>(value);
  }
  return bytes;
}

bool AppendGroup(std::string_view group, std::string& bytes) {
  if (group.empty() || group.size() > 4) return false;
  unsigned value = 0;
  for (const char c : group) {
    if (HexDigit(c) < 0) return false;
    value = value * 16 + static_cast<unsigned>(HexDigit(c));
  }
  bytes += static_cast<char>(value >> 8);
  bytes += static_cast<char>(value & 0xFF);
  return true;
}

// Groups between colons, the last of which may be an IPv4 address.
std::optional<std::string> GroupBytes(std::string_view text) {
  std::string bytes;
  if (text.empty()) return bytes;
  if (text.back() == ':') return std::nullopt;
  while (!text.empty() && bytes.size() < kIPv6Size) {
    const auto group = TakePart(text, ':');
    if (text.empty() && group.find('.') != std::string_view::npos) {
      const auto last = IPv4Bytes(group);
      if (last.empty()) return std::nullopt;
      bytes += last;
    } else if (!AppendGroup(group, bytes)) {
      return std::nullopt;
    }
  }
  if (!text.empty() || bytes.size() > kIPv6Size) return std::nullopt;
  return bytes;
}

std::string IPv6Bytes(std::string_view text) {
  const auto gap = text.find("::");
  if (gap == std::string_view::npos) {
    const auto bytes = GroupBytes(text);
    return bytes && bytes->size() == kIPv6Size ? *bytes : std::string();
  }
  const auto front = text.substr(0, gap);
  if (front.find('.') != std::string_view::npos) return {};
  const auto head = GroupBytes(front);
  const auto tail = GroupBytes(text.substr(gap + 2));
  if (!head || !tail || head->size() + tail->size() + 2 > kIPv6Size) return {};
  return *head + std::string(kIPv6Size - head->size() - tail->size(), '\0') + *tail;
}

bool IsLabel(std::string_view label) {
  return !label.empty() && label.size() <= kMaxLabel &&
         std::all_of(label.begin(), label.end(), [](char c) {
           return (UpperAscii(c) >= 'A' && UpperAscii(c) <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '-' || c == '_';
         });
}

// Letters, digits, "-" and "_" (which is no host name's, but in use inside houses). A last label of
// digits would make an address of it in some systems' eyes.
bool IsDnsName(std::string_view name) {
  if (name.empty() || name.size() > kMaxName || name.back() == '.') return false;
  std::string_view label;
  while (!name.empty()) {
    label = TakePart(name, '.');
    if (!IsLabel(label)) return false;
  }
  return !IsDigits(label);
}

std::string_view WithoutLastDot(std::string_view host) {
  if (!host.empty() && host.back() == '.') host.remove_suffix(1);
  return host;
}

}  // namespace

std::string AddressBytes(std::string_view host) {
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
    return IPv6Bytes(host.substr(0, host.find('%')));
  }
  const auto bytes = IPv4Bytes(host);
  return bytes.empty() ? IPv6Bytes(host.substr(0, host.find('%'))) : bytes;
}

std::string ServerNameFor(std::string_view host) {
  const auto name = WithoutLastDot(host);
  return IsDnsName(name) ? std::string(name) : std::string();
}

bool MatchesDnsName(std::string_view pattern, std::string_view host) {
  host = WithoutLastDot(host);
  if (!IsDnsName(host)) return false;
  if (!pattern.starts_with("*.")) return IsDnsName(pattern) && EqualsIgnoreCase(pattern, host);
  pattern.remove_prefix(2);
  TakePart(host, '.');
  return IsDnsName(pattern) && pattern.find('.') != std::string_view::npos &&
         EqualsIgnoreCase(pattern, host);
}

bool MatchesHost(const std::vector<std::string>& dnsNames,
                 const std::vector<std::string>& addresses, std::string_view host) {
  const auto address = AddressBytes(host);
  if (!address.empty()) {
    return std::find(addresses.begin(), addresses.end(), address) != addresses.end();
  }
  return std::any_of(dnsNames.begin(), dnsNames.end(),
                     [host](const auto& name) { return MatchesDnsName(name, host); });
}

}  // namespace quillon
