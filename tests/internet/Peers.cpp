#include "Peers.h"

#include <algorithm>
#include <utility>

namespace quillon::testing {

using Kind = ConversationStep::Kind;

void LinePeer::OnBytes(std::string_view bytes) {
  partial_ += bytes;
  for (auto end = partial_.find('\n'); end != std::string::npos; end = partial_.find('\n')) {
    const auto line = partial_.substr(0, end + 1);
    partial_.erase(0, end + 1);
    OnLine(line);
  }
}

ScriptedPeer::ScriptedPeer(const Conversation& conversation, Shape shape, Cut cut)
    : name_(conversation.name), shape_(shape), cut_(cut) {
  for (const auto& step : conversation.steps) {
    if (step.IsPeers()) steps_.push_back(step);
  }
}

std::vector<std::string> ScriptedPeer::Complaints() const {
  auto complaints = complaints_;
  const bool onlyTheEnd = next_ + 1 == steps_.size() && steps_[next_].kind == Kind::Close;
  if (next_ < steps_.size() && !onlyTheEnd) {
    complaints.push_back("line " + std::to_string(steps_[next_].line) + " was not reached");
  }
  return complaints;
}

// Says and does everything up to the next line that the client has to send.
void ScriptedPeer::Play() {
  for (; next_ < steps_.size() && next_ < cut_.steps; ++next_) {
    const auto& step = steps_[next_];
    if (step.kind == Kind::Hear || step.kind == Kind::HearData) break;
    const bool isCutStep = next_ + 1 == cut_.steps && cut_.halfway;
    if (step.kind == Kind::Say) {
      Utter(std::string_view(step.text).substr(0, step.text.size() / (isCutStep ? 2 : 1)));
    }
    if (step.kind == Kind::Wait) {
      Say(std::exchange(whole_, {}));
      Wait(std::stoul(step.text));
    }
    if (step.kind == Kind::Close) {
      Say(std::exchange(whole_, {}));
      Hangup();
    }
  }
  Say(std::exchange(whole_, {}));
  if (next_ == cut_.steps) {
    Hangup();
    ++next_;
  }
}

void ScriptedPeer::Utter(std::string_view text) {
  if (shape_ == Shape::Whole) {
    whole_ += text;
    return;
  }
  while (!text.empty()) {
    const auto end = shape_ == Shape::Byte ? 1 : std::min(text.find('\n'), text.size() - 1) + 1;
    Say(std::string(text.substr(0, end)));
    text.remove_prefix(end);
  }
}

void ScriptedPeer::OnLine(std::string_view line) {
  if (next_ >= steps_.size() || next_ >= cut_.steps) {
    if (cut_.steps > steps_.size() && !hearsAnything) {
      complaints_.push_back("at the end came: " + std::string(line));
    }
    return;
  }
  const auto& step = steps_[next_];
  if (!line.ends_with("\r\n") || line.find('\r') != line.size() - 2) {
    complaints_.push_back("not a CR LF line: " + std::string(line));
  }
  line.remove_suffix(line.ends_with("\r\n") ? 2 : 1);
  if (step.kind == Kind::HearData) {
    if (line != ".") {
      data.append(line).append("\n");
      return;
    }
  } else if (step.kind != Kind::Hear || !MatchesPattern(line, step.text)) {
    complaints_.push_back("line " + std::to_string(step.line) + " came as: " + std::string(line));
  }
  ++next_;
  Play();
}

void ObligingPeer::OnLine(std::string_view line) {
  if (inData_) {
    if (line != ".\r\n") return;
    inData_ = false;
    return Say("250 taken\r\n");
  }
  if (!isPop_) {
    inData_ = line.starts_with("DATA");
    return Say(inData_ ? "354 go on\r\n" : "250 yes\r\n");
  }
  if (line.starts_with("STAT")) return Say("+OK 1 100\r\n");
  const bool list = line.starts_with("TOP") || line.starts_with("RETR") || line.starts_with("UIDL");
  Say(list ? "+OK\r\nSubject: obliging\r\n\r\n.\r\n" : "+OK\r\n");
}

}  // namespace quillon::testing
