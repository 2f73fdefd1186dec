#include "Conversation.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "Text.h"
#include "UsageError.h"

namespace mailhost {

namespace {

using Kind = ConversationStep::Kind;

// Lines for the runner that plays the client's side.
constexpr std::array<std::string_view, 3> kOtherRunner{"expect", "call", "set"};

bool IsComment(std::string_view line) {
  return Trim(line).empty() || Trim(line).starts_with('#');
}

// The text after a two-character mark, and after one blank that sets it off.
std::string_view TextOf(std::string_view line) {
  line.remove_prefix(2);
  if (line.starts_with(' ')) line.remove_prefix(1);
  return line;
}

Shape ParseShape(std::string_view name) {
  Shape shape;
  if (name == "line") {
    shape.kind = Shape::Kind::kLine;
  } else if (name == "byte") {
    shape.kind = Shape::Kind::kPieces;
    shape.pieceSize = 1;
  } else if (name != "whole") {
    throw std::invalid_argument("shape takes whole, line or byte");
  }
  return shape;
}

std::chrono::milliseconds ParseWait(std::string_view text) {
  constexpr std::uint64_t kMost = 1'000'000'000;
  const auto number = ParseNumber(text);
  if (!number || *number > kMost) throw std::invalid_argument("wait needs milliseconds");
  return std::chrono::milliseconds(*number);
}

ConversationStep ParseWord(std::string_view line) {
  const std::string_view word = TakeWord(line);
  ConversationStep step;
  if (word == "wait") {
    step.kind = Kind::kWait;
    step.wait = ParseWait(line);
  } else if (word == "shape") {
    step.kind = Kind::kShape;
    step.shape = ParseShape(line);
  } else if (word == "close" && line.empty()) {
    step.kind = Kind::kClose;
  } else {
    throw std::invalid_argument("not a line of a conversation");
  }
  return step;
}

ConversationStep ParseStep(std::string_view line, Protocol protocol) {
  ConversationStep step;
  if (line.starts_with("S:")) {
    step.text = Unescape(TextOf(line)) + "\r\n";
  } else if (line.starts_with("S>")) {
    step.text = Unescape(TextOf(line));
  } else if (line.starts_with("C:")) {
    step.kind = Kind::kExpect;
    step.text = TextOf(line);
    step.pattern.emplace(step.text);
  } else if (Trim(line) == "D:") {
    if (protocol != Protocol::kSmtp) throw std::invalid_argument("D: belongs to protocol smtp");
    step.kind = Kind::kContent;
  } else {
    step = ParseWord(line);
  }
  return step;
}

Protocol ParseProtocol(std::string_view line) {
  TakeWord(line);
  if (line == "smtp") return Protocol::kSmtp;
  if (line == "pop") return Protocol::kPop;
  throw std::invalid_argument("protocol takes smtp or pop");
}

bool IsForOtherRunner(std::string_view line) {
  std::string_view word = TakeWord(line);
  if (word.ends_with(':')) word.remove_suffix(1);
  return std::find(kOtherRunner.begin(), kOtherRunner.end(), word) != kOtherRunner.end();
}

// Reads one line into `conversation`; the first one names the protocol.
void ParseLine(std::string_view line, bool first, Conversation& conversation) {
  if (first) {
    conversation.protocol = ParseProtocol(line);
    return;
  }
  if (IsForOtherRunner(line)) return;
  if (!conversation.steps.empty() && conversation.steps.back().kind == Kind::kClose) {
    throw std::invalid_argument("nothing may follow close");
  }
  conversation.steps.push_back(ParseStep(line, conversation.protocol));
}

}  // namespace

bool IsConversation(std::string_view text) {
  for (std::string_view line : SplitLines(text)) {
    if (!IsComment(line)) return TakeWord(line) == "protocol";
  }
  return false;
}

Conversation ParseConversation(const std::string& file, std::string_view text) {
  Conversation conversation{file};
  std::size_t number = 0;
  bool first = true;
  for (const std::string_view line : SplitLines(text)) {
    ++number;
    if (IsComment(line)) continue;
    const std::size_t before = conversation.steps.size();
    try {
      ParseLine(line, std::exchange(first, false), conversation);
    } catch (const std::invalid_argument& error) {
      throw UsageError(file, number, error.what());
    }
    if (conversation.steps.size() > before) conversation.steps.back().line = number;
  }
  return conversation;
}

}  // namespace mailhost
