#include "FaultFile.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "Text.h"
#include "UsageError.h"

namespace mailhost {

namespace {

std::string ReadFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (!stream) {
    throw UsageError(file + ": cannot be read: " + std::generic_category().message(errno));
  }
  return text;
}

void LoadRules(const std::string& file, const std::string& text, std::vector<FaultRule>& rules) {
  std::size_t number = 0;
  for (const std::string_view line : SplitLines(text)) {
    ++number;
    if (Trim(line).empty() || Trim(line).starts_with('#')) continue;
    try {
      rules.push_back(ParseFaultRule(line));
    } catch (const std::invalid_argument& error) {
      throw UsageError(file, number, error.what());
    }
  }
}

}  // namespace

void LoadFaults(const std::string& file, Faults& faults) {
  const std::string text = ReadFile(file);
  if (!IsConversation(text)) {
    LoadRules(file, text, faults.rules);
    return;
  }
  Conversation conversation = ParseConversation(file, text);
  auto& place = conversation.protocol == Protocol::kSmtp ? faults.smtp : faults.pop;
  if (place) throw UsageError(file + ": a second conversation for the same protocol");
  place = std::move(conversation);
}

}  // namespace mailhost
