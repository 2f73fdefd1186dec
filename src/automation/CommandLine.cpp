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

constexpr std::array<Switch, 8> kSwitches{{
    {L"embedding", std::nullopt},
    {L"automation", std::nullopt},
    {L"regserver", StartMode::Register},
    {L"unregserver", StartMode::Unregister},
    {L"regserverperuser", StartMode::RegisterPerUser},
    {L"unregserverperuser", StartMode::UnregisterPerUser},
    {L"version", StartMode::ShowVersion},
    {L"?", StartMode::ShowHelp},
}};

bool LooksLikeSwitch(std::wstring_view argument) {
  return argument.starts_with(L'-') || argument.starts_with(L'/');
}

const Switch* FindSwitch(std::wstring_view argument) {
  if (!LooksLikeSwitch(argument)) return nullptr;
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
    if (known != nullptr && !known->mode) continue;
    if (!line.rest.empty() || !LooksLikeSwitch(argument)) {
      line.rest.push_back(argument);
    } else if (known == nullptr) {
      line.mode = StartMode::Refuse;
      line.unknown = argument;
      break;
    } else {
      line.mode = *known->mode;
    }
  }
  return line;
}

}  // namespace quillon
