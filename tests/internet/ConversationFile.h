// A conversation: what a server says and must hear, and what is called meanwhile.
// tests/conversations/README.md describes the format.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::testing {

struct ConversationStep {
  enum class Kind { Say, Hear, HearData, Wait, Secure, Close, Set, Call, Expect };

  Kind kind{};
  std::string text;      // unescaped for Say, as written else
  std::size_t line = 0;  // of the file, from 1

  bool IsPeers() const { return kind < Kind::Set; }
};

struct Conversation {
  std::string name;
  bool isPop = false;
  std::vector<ConversationStep> steps;
};

// Throws std::runtime_error that names the file and the line.
Conversation ReadConversation(const std::string& path);

// \r \n \t \0 \\ and \xHH.
std::string Unescape(std::string_view text);

// `*` stands for any text, `\*` for an asterisk.
bool MatchesPattern(std::string_view text, std::string_view pattern);

// Takes the first word and one blank behind it off the text.
std::string_view TakeWord(std::string_view& text);

}  // namespace quillon::testing
