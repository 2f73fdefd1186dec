#include "FaultRules.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "Escapes.h"
#include "Text.h"

namespace mailhost {

namespace {

using Kind = FaultAction::Kind;

// Commands that the host does not know can go wrong too, so some common ones are listed.
constexpr std::array<std::string_view, 19> kSmtpSteps{
    "GREETING",   "HELO", "EHLO", "MAIL",     "RCPT",     "DATA", "BODY",
    "TERMINATOR", "RSET", "NOOP", "VRFY",     "EXPN",     "HELP", "QUIT",
    "STARTTLS",   "AUTH", "BDAT", "RESPONSE", "HANDSHAKE"};
constexpr std::array<std::string_view, 18> kPopSteps{
    "GREETING", "USER", "PASS", "APOP", "STAT", "LIST", "UIDL", "TOP",      "RETR",
    "DELE",     "RSET", "NOOP", "CAPA", "QUIT", "STLS", "AUTH", "RESPONSE", "HANDSHAKE"};

[[noreturn]] void Fail(const std::string& why) {
  throw std::invalid_argument(why);
}

template <typename Steps>
bool Contains(const Steps& steps, std::string_view step) {
  return std::find(steps.begin(), steps.end(), step) != steps.end();
}

std::string ParseStep(const std::optional<Protocol>& protocol, std::string_view word) {
  std::string step = ToUpper(word);
  const bool known = step == "*" || (protocol != Protocol::kPop && Contains(kSmtpSteps, step)) ||
                     (protocol != Protocol::kSmtp && Contains(kPopSteps, step));
  if (!known) Fail("no such step: \"" + std::string(word) + "\"");
  return step;
}

std::uint64_t TakeCount(std::string_view& rest, std::string_view what, std::uint64_t least) {
  const std::string_view word = TakeWord(rest);
  const auto number = ParseNumber(word);
  constexpr std::uint64_t kMost = 1'000'000'000;
  if (!number || *number < least || *number > kMost) {
    Fail(std::string(what) + " needs a number from " + std::to_string(least) + " to " +
         std::to_string(kMost) + ", not \"" + std::string(word) + "\"");
  }
  return *number;
}

void ParseReply(std::string_view& rest, FaultAction& action) {
  if (rest.empty()) Fail("reply needs a text");
  action.text = Unescape(rest);
  rest = {};
}

void ParseDelay(std::string_view& rest, FaultAction& action) {
  action.number = TakeCount(rest, "delay", 0);
}

void ParseTruncate(std::string_view& rest, FaultAction& action) {
  action.number = TakeCount(rest, "truncate", 0);
}

void ParseSplit(std::string_view& rest, FaultAction& action) {
  action.shape.kind = Shape::Kind::kPieces;
  if (rest.starts_with("line")) {
    TakeWord(rest);
    action.shape.kind = Shape::Kind::kLine;
  } else if (rest.starts_with("byte")) {
    TakeWord(rest);
    action.shape.pieceSize = 1;
  } else {
    action.shape.pieceSize = TakeCount(rest, "split (byte, line or)", 1);
  }
  if (!rest.empty()) {
    action.shape.gap = std::chrono::milliseconds(TakeCount(rest, "the gap of split", 0));
  }
}

void ParseDrop(std::string_view& rest, FaultAction& action) {
  const std::string_view when = TakeWord(rest);
  if (when == "mid") {
    action.kind = Kind::kDropMid;
  } else if (when == "after") {
    action.kind = Kind::kDropAfter;
  } else if (!when.empty()) {
    Fail("drop takes mid or after, not \"" + std::string(when) + "\"");
  }
}

void ParseGarbage(std::string_view& rest, FaultAction& action) {
  action.number = TakeCount(rest, "garbage", 1);
  action.lines = rest == "lines";
  if (action.lines) rest = {};
}

void ParseFlood(std::string_view& rest, FaultAction& action) {
  action.number = TakeCount(rest, "flood", 1);
  if (rest.empty()) Fail("flood needs a text");
  action.text = Unescape(rest);
  rest = {};
}

void ParseNothing(std::string_view& /*rest*/, FaultAction& /*action*/) {}

struct ActionRow {
  std::string_view name;
  Kind kind;
  void (*parse)(std::string_view& rest, FaultAction& action);
};

constexpr ActionRow kActions[] = {
    {"reply", Kind::kReply, ParseReply},
    {"delay", Kind::kDelay, ParseDelay},
    {"split", Kind::kSplit, ParseSplit},
    {"multiline", Kind::kMultiline, ParseNothing},
    {"drop", Kind::kDrop, ParseDrop},
    {"silent", Kind::kSilent, ParseNothing},
    {"garbage", Kind::kGarbage, ParseGarbage},
    {"stall", Kind::kStall, ParseNothing},
    {"truncate", Kind::kTruncate, ParseTruncate},
    {"flood", Kind::kFlood, ParseFlood},
};

FaultAction ParseAction(std::string_view rest) {
  const std::string_view name = TakeWord(rest);
  for (const ActionRow& row : kActions) {
    if (row.name != name) continue;
    FaultAction action;
    action.kind = row.kind;
    row.parse(rest, action);
    if (!rest.empty()) Fail("nothing may follow, but \"" + std::string(rest) + "\" does");
    return action;
  }
  Fail("no such action: \"" + std::string(name) + "\"");
}

// A rule that could never do anything is a mistake.
void CheckPlace(const FaultRule& rule) {
  constexpr std::array<std::string_view, 6> kDataSteps{"TOP", "RETR", "LIST", "UIDL", "CAPA", "*"};
  const Kind kind = rule.action.kind;
  const bool isReplyChange = kind == Kind::kMultiline || kind == Kind::kDropMid ||
                             kind == Kind::kDropAfter || kind == Kind::kFlood;
  if (rule.step == "HANDSHAKE") {
    if (isReplyChange) Fail("this changes a reply, which a handshake is not");
    return;
  }
  if (kind != Kind::kTruncate) return;
  if (rule.protocol == Protocol::kSmtp || !Contains(kDataSteps, rule.step)) {
    Fail("truncate cuts the data of POP3 replies, which this step has not");
  }
}

}  // namespace

FaultRule ParseFaultRule(std::string_view line) {
  FaultRule rule;
  rule.text = Trim(line);
  std::string_view rest = line;
  std::string_view word = TakeWord(rest);
  if (word == "smtp" || word == "pop") {
    rule.protocol = word == "smtp" ? Protocol::kSmtp : Protocol::kPop;
    word = TakeWord(rest);
  }
  if (word != "at") Fail("[smtp|pop] at STEP [N] ACTION is needed");
  rule.step = ParseStep(rule.protocol, TakeWord(rest));
  if (!rest.empty() && rest.front() >= '0' && rest.front() <= '9') {
    rule.occurrence = TakeCount(rest, "the occurrence", 1);
  }
  rule.action = ParseAction(rest);
  CheckPlace(rule);
  return rule;
}

std::vector<const FaultRule*> FaultTracker::Reach(std::string_view step) {
  std::vector<const FaultRule*> reached;
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const FaultRule& rule = rules_[i];
    if (rule.protocol.value_or(protocol_) != protocol_) continue;
    if (rule.step != "*" && rule.step != step) continue;
    ++counts_[i];
    if (rule.occurrence.value_or(counts_[i]) == counts_[i]) reached.push_back(&rule);
  }
  return reached;
}

}  // namespace mailhost
