#include "FaultFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "Text.h"
#include "UniqueFd.h"
#include "UsageError.h"

namespace mailhost {

namespace {

std::string ReadFile(const std::string& file) {
  const UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  std::string text;
  std::array<char, 4096> buffer;
  ssize_t count = fd ? read(fd.Get(), buffer.data(), buffer.size()) : -1;
  for (; count > 0; count = read(fd.Get(), buffer.data(), buffer.size())) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  if (count < 0) throw UsageError(file + ": " + std::generic_category().message(errno));
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
