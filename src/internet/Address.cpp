#include "internet/Address.h"

#include <algorithm>

#include "core/RecipientText.h"
#include "core/Text.h"
#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestLine = 998;

// A name as RFC 5322, section 3.2.4, quotes it.
std::string Quoted(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// The recipients that one entry of a list names, as they go into a header. What stands before a
// comma is a recipient of its own, but not when it is no address and the name of one follows: then
// the comma belongs to the name, as in "Doe, John <john@example.com>".
std::vector<std::string> RecipientsOf(std::string_view entry) {
  std::vector<std::string> recipients;
  std::size_t names = 0;  // at the end of the list: what may be the start of a name
  for (auto& piece : SplitRecipients(entry, ",", "<>")) {
    const auto open = LastBracket(piece);
    if (open == std::string_view::npos) {
      names = piece.find('@') == std::string::npos ? names + 1 : 0;
      recipients.push_back(std::move(piece));
      continue;
    }
    if (names != 0 && open != 0) {
      const auto first = recipients.end() - static_cast<std::ptrdiff_t>(names);
      auto name = Join({first, recipients.end()}, ", ");
      name.append(", ").append(Trim(std::string_view(piece).substr(0, open)));
      recipients.erase(first, recipients.end());
      piece = Quoted(name) + " " + piece.substr(open);
    }
    names = 0;
    recipients.push_back(std::move(piece));
  }
  return recipients;
}

}  // namespace

std::string BareAddress(std::string_view text) {
  const auto open = LastBracket(text);
  if (open == std::string_view::npos) return TrimmedCopy(text);
  text.remove_prefix(open + 1);
  return TrimmedCopy(text.substr(0, text.find('>')));
}

bool IsSenderAddress(std::string_view bareAddress) {
  return bareAddress.find('@') != std::string_view::npos && IsRecipientAddress(bareAddress);
}

bool IsRecipientAddress(std::string_view bareAddress) {
  const auto at = bareAddress.rfind('@');
  if (bareAddress.empty() || at == 0 || at == bareAddress.size() - 1) return false;
  return std::none_of(bareAddress.begin(), bareAddress.end(), [](char c) {
    return (static_cast<unsigned char>(c) <= ' ') || c == '<' || c == '>' || c == '\x7F';
  });
}

std::vector<std::string> FormatSMTPRecipients(const std::vector<std::string>& whoTo,
                                              const std::vector<std::string>& cc,
                                              const std::vector<std::string>& bcc) {
  std::vector<std::string> addresses;
  for (const auto* list : {&whoTo, &cc, &bcc}) {
    for (const auto& entry : *list) {
      for (const auto& recipient : RecipientsOf(entry)) {
        if (auto address = BareAddress(recipient); !address.empty()) {
          addresses.push_back(std::move(address));
        }
      }
    }
  }
  return addresses;
}

std::vector<std::string> RecipientsIn(const std::vector<std::string>& entries) {
  std::vector<std::string> recipients;
  for (const auto& entry : entries) {
    auto some = RecipientsOf(entry);
    recipients.insert(recipients.end(), some.begin(), some.end());
  }
  return recipients;
}

std::string FormatRecipientText(const std::vector<std::string>& recipients, std::size_t used) {
  std::string text;
  auto column = used;
  for (const auto& entry : recipients) {
    for (const auto& recipient : RecipientsOf(entry)) {
      const auto value = HeaderText(recipient);
      if (!text.empty()) {
        const bool fits = column + value.size() + 3 <= kLongestLine;
        text += fits ? ", " : ",\r\n ";
        column = fits ? column + 2 : 1;
      }
      text += value;
      column += value.size();
    }
  }
  return text;
}

}  // namespace quillon
