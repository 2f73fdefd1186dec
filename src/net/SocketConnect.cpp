#include "net/SocketConnect.h"

#include <array>
#include <cstdio>
#include <utility>

#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kMostRefusedStarts = 11;
constexpr TickCount kPauseBetweenStarts = 20;

std::optional<std::uint8_t> ParseOctet(std::string_view text) {
  if (text.empty() || text.size() > 3 || (text[0] == '0' && text.size() > 1)) return std::nullopt;
  unsigned value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<unsigned>(c - '0');
  }
  if (value > 255) return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

}  // namespace

std::optional<SocketAddress> ParseDottedAddress(std::string_view host) {
  const auto parts = Split(host, ".");
  if (parts.size() != 4) return std::nullopt;
  SocketAddress address;
  for (std::size_t index = 0; index < 4; ++index) {
    const auto octet = ParseOctet(parts[index]);
    if (!octet) return std::nullopt;
    address.bytes[index] = *octet;
  }
  return address;
}

std::string AddressText(const SocketAddress& address) {
  std::string text;
  std::array<char, 8> part{};
  if (address.isIPv6) {
    for (std::size_t at = 0; at < address.bytes.size(); at += 2) {
      const auto group = static_cast<unsigned>(address.bytes[at] << 8U | address.bytes[at + 1]);
      std::snprintf(part.data(), part.size(), at == 0 ? "%x" : ":%x", group);
      text += part.data();
    }
    return text;
  }
  for (std::size_t at = 0; at < 4; ++at) {
    if (at > 0) text += '.';
    text += std::to_string(address.bytes[at]);
  }
  return text;
}

SocketConnect::SocketConnect(EventLoop& loop, Network& network)
    : loop_(loop),
      network_(network),
      overall_(loop, [this] { Finish(nullptr, kNotConnected); }),
      attempt_(loop, [this] { TryNext(); }),
      again_(loop, [this] { TryNext(); }) {}

void SocketConnect::Start(const std::string& host, std::uint16_t port, TickCount timeout,
                          Result result) {
  Cancel();
  result_ = std::move(result);
  deadline_ = loop_.Now() + timeout;
  overall_.Start(timeout);
  next_ = notStarted_ = 0;
  lastError_ = 0;
  if (auto address = ParseDottedAddress(host)) {
    address->port = port;
    addresses_ = {*address};
    return TryNext();
  }
  lookup_ = network_.Resolve(host, port, [this](std::vector<SocketAddress> addresses, int error) {
    OnResolved(std::move(addresses), error);
  });
}

void SocketConnect::Cancel() {
  result_ = nullptr;
  lookup_.reset();
  stream_.reset();
  overall_.Stop();
  attempt_.Stop();
  again_.Stop();
}

void SocketConnect::OnResolved(std::vector<SocketAddress> addresses, int error) {
  lastError_ = error;
  addresses_ = std::move(addresses);
  TryNext();
}

// An address that does not answer costs its share of the time that is left, so that the others get
// theirs.
void SocketConnect::TryNext() {
  while (next_ < addresses_.size()) {
    const auto& address = addresses_[next_++];
    stream_ = network_.Connect(address, *this);
    if (stream_ == nullptr) {
      ++notStarted_;
      continue;
    }
    notStarted_ = 0;
    const auto now = loop_.Now();
    const auto left = deadline_ > now ? deadline_ - now : 0;
    return attempt_.Start(left / (addresses_.size() - next_ + 1));
  }
  stream_.reset();
  if (notStarted_ == 0) {
    overall_.Start(0);  // nothing to wait for; the result comes from the loop all the same
  } else if (notStarted_ < kMostRefusedStarts) {
    next_ = 0;
    again_.Start(kPauseBetweenStarts);
  } else {
    Finish(nullptr, kNotStarted);
  }
}

std::string SocketConnect::Address() const {
  return next_ == 0 ? std::string() : AddressText(addresses_[next_ - 1]);
}

void SocketConnect::OnStreamConnected() {
  Finish(std::move(stream_), 0);
}

void SocketConnect::OnStreamFailed(int error) {
  lastError_ = error;
  attempt_.Stop();
  TryNext();
}

void SocketConnect::Finish(std::unique_ptr<ByteStream> stream, std::int32_t code) {
  const auto result = std::move(result_);
  Cancel();
  result(std::move(stream), code);
}

}  // namespace quillon
