#include "automation/CommandLine.h"

#include <array>
#include <cwctype>
#include <optional>

namespace quillon {
namespace {

struct Switch {
  std::wstring_view name;
  std::optional<StartMode> mode;
};

constexpr std::array<Switch, 6> kSwitches{{
    {L"embedding", std::nullopt},
    {L"automation", std::nullopt},
    {L"regserver", StartMode::Register},
    {L"unregserver", StartMode::Unregister},
    {L"regserverperuser", StartMode::RegisterPerUser},
    {L"unregserverperuser", StartMode::UnregisterPerUser},
}};

const Switch* FindSwitch(std::wstring_view argument) {
  if (!argument.starts_with(L'-') && !argument.starts_with(L'/')) return nullptr;
  std::wstring name(argument.substr(1));
  for (wchar_t& letter : name) letter = static_cast<wchar_t>(std::towlower(letter));
  for (const Switch& known : kSwitches) {
    if (known.name == name) return &known;
  }
  return nullptr;
}

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments) {
  CommandLine line;
  for (const std::wstring& argument : arguments) {
    const Switch* known = FindSwitch(argument);
    if (known == nullptr) {
      line.rest.push_back(argument);
    } else if (known->mode) {
      line.mode = *known->mode;
    }
  }
  return line;
}

}  // namespace quillon
