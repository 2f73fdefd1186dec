#include "automation/CommandLine.h"

#include <windows.h>
#include <array>
#include <cwctype>
#include <optional>
#include <shellapi.h>

namespace quillon {
namespace {

struct Switch {
  std::wstring_view name;
  std::optional<StartMode> mode;
};

constexpr std::array<Switch, 11> kSwitches{{
    {L"embedding", std::nullopt},
    {L"automation", std::nullopt},
    {L"regserver", StartMode::Register},
    {L"unregserver", StartMode::Unregister},
    {L"regserverperuser", StartMode::RegisterPerUser},
    {L"unregserverperuser", StartMode::UnregisterPerUser},
    {L"version", StartMode::ShowVersion},
    {L"?", StartMode::ShowHelp},
    {L"configure", StartMode::Configure},
    {L"authorize", StartMode::Authorize},
    {L"check", StartMode::Check},
}};

constexpr std::wstring_view kBlanks = L" \t";

std::wstring_view Trimmed(std::wstring_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// The end of the word that the text begins with; blanks between quotation marks belong to it.
std::size_t WordLength(std::wstring_view text) {
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'"') quoted = !quoted;
    if (!quoted && kBlanks.find(text[i]) != std::wstring_view::npos) return i;
  }
  return text.size();
}

std::wstring Unquoted(std::wstring_view word) {
  std::wstring plain(word);
  std::erase(plain, L'"');
  return plain;
}

bool LooksLikeSwitch(std::wstring_view word) {
  return word.starts_with(L'-') || word.starts_with(L'/');
}

const Switch* FindSwitch(std::wstring_view word) {
  if (!LooksLikeSwitch(word)) return nullptr;
  std::wstring name(word.substr(1));
  for (wchar_t& letter : name) letter = static_cast<wchar_t>(std::towlower(letter));
  for (const Switch& known : kSwitches) {
    if (known.name == name) return &known;
  }
  return nullptr;
}

bool TakesArguments(StartMode mode) {
  return mode == StartMode::Configure || mode == StartMode::Authorize || mode == StartMode::Check;
}

// With the quotation marks and backslashes that every other program has.
std::vector<std::wstring> ArgumentsIn(std::wstring_view text) {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW((L"x " + std::wstring(text)).c_str(), &count);
  if (words == nullptr) return {};
  std::vector<std::wstring> arguments(words + 1, words + count);
  LocalFree(static_cast<HLOCAL>(words));
  return arguments;
}

std::wstring_view WithoutLastSwitches(std::wstring_view text) {
  for (;;) {
    const auto blank = text.find_last_of(kBlanks);
    if (blank == std::wstring_view::npos) return text;
    const Switch* const last = FindSwitch(text.substr(blank + 1));
    if (last == nullptr || last->mode) return text;
    text = Trimmed(text.substr(0, blank));
  }
}

}  // namespace

CommandLine ParseCommandLine(std::wstring_view text) {
  CommandLine line;
  text = Trimmed(text.substr(WordLength(text)));
  line.bare = text.empty();
  while (!text.empty()) {
    const auto length = WordLength(text);
    const auto word = Unquoted(text.substr(0, length));
    if (!LooksLikeSwitch(word)) {
      line.rest = WithoutLastSwitches(text);
      break;
    }
    const Switch* const known = FindSwitch(word);
    if (known == nullptr) {
      line.mode = StartMode::Refuse;
      line.unknown = word;
      break;
    }
    if (known->mode) line.mode = *known->mode;
    text = Trimmed(text.substr(length));
    if (TakesArguments(line.mode)) {
      line.arguments = ArgumentsIn(text);
      break;
    }
  }
  return line;
}

}  // namespace quillon
