#include "internet/EncodedField.h"

#include <utility>

#include "codec/EncodedWordWriter.h"
#include "core/ErrorCode.h"
#include "core/RecipientText.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "net/DomainLabels.h"
#include "net/WireText.h"

namespace quillon {

namespace {

// A name without the quotes around it, and what stands in them as it is meant.
std::string Unquoted(std::string_view name) {
  if (name.size() < 2 || name.front() != '"' || name.back() != '"') return std::string(name);
  std::string text;
  name = name.substr(1, name.size() - 2);
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (name[at] == '\\' && at + 1 < name.size()) ++at;
    text += name[at];
  }
  return text;
}

std::string Words(std::string_view text, const TextEncoder& encoder, std::string_view what,
                  std::size_t used) {
  return EncodeWords(
      text, encoder.Label(text),
      [&](std::string_view part) { return EncodedBytes(part, encoder, what); }, used);
}

}  // namespace

std::string EncodedBytes(std::string_view text, const TextEncoder& encoder, std::string_view what) {
  auto bytes = encoder.ToBytes(text);
  if (bytes) return *std::move(bytes);
  throw ServerError(error_code::kInvalidValue, std::string(what) +
                                                   " holds what the character set " +
                                                   std::string(encoder.Label(text)) +
                                                   " lacks: " + encoder.Lacking(text) + ".");
}

std::string EncodedText(std::string_view text, const TextEncoder& encoder, std::string_view what,
                        std::size_t used) {
  auto safe = HeaderText(text);
  if (!NeedsEncodedWords(safe)) return safe;
  auto bytes = EncodedBytes(safe, encoder, what);
  // Where a "?" has taken the place of all else.
  return NeedsEncodedWords(bytes) ? Words(safe, encoder, what, used) : bytes;
}

std::string EncodedAddress(std::string_view recipient, const TextEncoder& encoder,
                           std::string_view what) {
  const auto text = HeaderText(recipient);
  const auto open = LastBracket(text);
  if (open == std::string::npos) return WithAsciiDomain(text);
  const auto close = text.find('>', open);
  const auto name = Trim(std::string_view(text).substr(0, open));
  const auto address = std::string_view(text).substr(open + 1, close - open - 1);
  auto bare = "<" + WithAsciiDomain(Trim(address)) + ">";
  if (name.empty()) return bare;
  if (!NeedsEncodedWords(name)) return std::string(name) + " " + bare;
  return Words(Unquoted(name), encoder, what, 1) + " " + bare;
}

std::string WithAsciiDomain(std::string_view address) {
  const auto at = address.rfind('@');
  if (at == std::string_view::npos) return std::string(address);
  const auto domain = AsciiDomain(address.substr(at + 1));
  return domain ? std::string(address.substr(0, at + 1)) + *domain : std::string(address);
}

}  // namespace quillon
