#include "internet/SmtpCapabilities.h"

#include <charconv>
#include <string_view>

#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kCodeAndMark = 4;

// Far more than there are; what a server could say is bounded by the length of a reply.
constexpr std::size_t kMostMechanisms = 64;

void AddMechanisms(std::vector<std::string>& mechanisms, std::string_view words) {
  for (const auto& word : Split(words, " ")) {
    if (word.empty() || mechanisms.size() == kMostMechanisms) continue;
    mechanisms.push_back(UpperAscii(word));
  }
}

void AddCapability(SmtpCapabilities& found, std::string_view line) {
  // Old servers write "AUTH=LOGIN".
  const auto end = line.find_first_of(" =");
  const auto word = UpperAscii(line.substr(0, end));
  const auto rest = end == std::string_view::npos ? std::string_view() : Trim(line.substr(end + 1));
  if (word == "STARTTLS") {
    found.startTls = true;
  } else if (word == "PIPELINING") {
    found.pipelining = true;
  } else if (word == "8BITMIME") {
    found.eightBitMime = true;
  } else if (word == "SMTPUTF8") {
    found.utf8 = true;
  } else if (word == "DSN") {
    found.deliveryStatus = true;
  } else if (word == "AUTH") {
    AddMechanisms(found.mechanisms, rest);
  } else if (word == "SIZE") {
    found.size = true;
    std::uint64_t most = 0;
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), most);
    if (read.ec == std::errc()) found.mostBytes = most;
  }
}

}  // namespace

SmtpCapabilities ReadSmtpCapabilities(const std::vector<std::string>& lines) {
  SmtpCapabilities found;
  for (std::size_t at = 1; at < lines.size(); ++at) {
    if (lines[at].size() > kCodeAndMark) {
      found.entries.emplace_back(Trim(std::string_view(lines[at]).substr(kCodeAndMark)));
      AddCapability(found, found.entries.back());
    }
  }
  return found;
}

}  // namespace quillon
