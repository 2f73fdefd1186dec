#include "internet/Address.h"

#include <algorithm>

#include "core/RecipientText.h"
#include "core/Text.h"
#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestLine = 998;

}  // namespace

std::string BareAddress(std::string_view text) {
  bool quoted = false;
  auto open = std::string_view::npos;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '"') quoted = !quoted;
    if (text[at] == '<' && !quoted) open = at;
  }
  if (open == std::string_view::npos) return TrimmedCopy(text);
  text.remove_prefix(open + 1);
  return TrimmedCopy(text.substr(0, text.find('>')));
}

bool IsSenderAddress(std::string_view bareAddress) {
  const auto at = bareAddress.rfind('@');
  if (at == std::string_view::npos || at == 0 || at + 1 == bareAddress.size()) return false;
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
      for (const auto& recipient : SplitRecipients(entry, ",", "<>")) {
        if (auto address = BareAddress(recipient); !address.empty()) {
          addresses.push_back(std::move(address));
        }
      }
    }
  }
  return addresses;
}

std::string FormatRecipientText(const std::vector<std::string>& recipients, std::size_t used) {
  std::string text;
  auto column = used;
  for (const auto& recipient : recipients) {
    const auto value = HeaderText(Trim(recipient));
    if (!text.empty()) {
      const bool fits = column + value.size() + 3 <= kLongestLine;
      text += fits ? ", " : ",\r\n ";
      column = fits ? column + 2 : 1;
    }
    text += value;
    column += value.size();
  }
  return text;
}

}  // namespace quillon
