#include "ConversationFile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

namespace quillon::testing {

namespace {

using Kind = ConversationStep::Kind;

constexpr std::pair<std::string_view, Kind> kWords[] = {
    {"S:", Kind::Say},    {"S>", Kind::Say},        {"C:", Kind::Hear},     {"D:", Kind::HearData},
    {"wait", Kind::Wait}, {"secure", Kind::Secure}, {"close", Kind::Close}, {"set", Kind::Set},
    {"call", Kind::Call}, {"expect", Kind::Expect}};

}  // namespace

std::string Unescape(std::string_view text) {
  static const std::map<char, char> kSimple = {
      {'r', '\r'}, {'n', '\n'}, {'t', '\t'}, {'0', '\0'}, {'\\', '\\'}};
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\' || at + 1 == text.size()) {
      result += text[at];
      continue;
    }
    const char escape = text[++at];
    if (escape == 'x' && at + 2 < text.size()) {
      const std::string digits(text.substr(at + 1, 2));
      result += static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
      at += 2;
    } else if (const auto found = kSimple.find(escape); found != kSimple.end()) {
      result += found->second;
    } else {
      throw std::runtime_error("unknown escape");
    }
  }
  return result;
}

bool MatchesPattern(std::string_view text, std::string_view pattern) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] == '*') {
    for (std::size_t skip = 0; skip <= text.size(); ++skip) {
      if (MatchesPattern(text.substr(skip), pattern.substr(1))) return true;
    }
    return false;
  }
  std::size_t used = 1;
  char wanted = pattern[0];
  if (wanted == '\\' && pattern.starts_with("\\*")) {
    wanted = '*';
    used = 2;
  } else if (wanted == '\\') {
    used = pattern.starts_with("\\x") ? 4 : 2;
    wanted = Unescape(pattern.substr(0, used))[0];
  }
  return !text.empty() && text[0] == wanted && MatchesPattern(text.substr(1), pattern.substr(used));
}

std::string_view TakeWord(std::string_view& text) {
  const auto word = text.substr(0, text.find(' '));
  text.remove_prefix(word.size());
  if (!text.empty()) text.remove_prefix(1);
  return word;
}

Conversation ReadConversation(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  Conversation conversation;
  conversation.name = std::filesystem::path(path).stem().string();
  std::string line;
  bool first = true;
  for (std::size_t number = 1; std::getline(file, line); ++number) {
    if (line.find_first_not_of(' ') == std::string::npos || line[0] == '#') continue;
    std::string_view rest = line;
    const auto word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(std::min(rest.size(), word.size() + 1));
    if (first) {
      conversation.isPop = rest == "pop";
      first = false;
      continue;
    }
    if (word == "shape") continue;  // the runner plays every shape
    const auto* const found = std::find_if(std::begin(kWords), std::end(kWords),
                                           [&](const auto& known) { return known.first == word; });
    if (found == std::end(kWords)) throw std::runtime_error(path + ":" + std::to_string(number));
    ConversationStep step{found->second, std::string(rest), number};
    if (step.kind == Kind::Say) step.text = Unescape(rest) + (word == "S:" ? "\r\n" : "");
    conversation.steps.push_back(std::move(step));
  }
  if (first) throw std::runtime_error("no conversation in " + path);
  return conversation;
}

}  // namespace quillon::testing
