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
    if (step.kind == Kind::Secure) {
      Say(std::exchange(whole_, {}));
      SetFilter(secure());
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
  if (isOld && line.starts_with("EHLO ")) return Say("502 what?\r\n");
  if (isOld && line.starts_with("CAPA")) return Say("-ERR what?\n");
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
  if (line.starts_with("CAPA")) return Say("-ERR what?\r\n");
  if (line.starts_with("STAT")) return Say("+OK 1 100\r\n");
  const bool list = line.starts_with("TOP") || line.starts_with("RETR") || line.starts_with("UIDL");
  Say(list ? "+OK\r\nSubject: obliging\r\n\r\n.\r\n" : "+OK\r\n");
}

void MailboxPeer::OnLine(std::string_view line) {
  const auto trouble = line.starts_with(mailbox_->troubleAt) ? mailbox_->trouble : Trouble::None;
  if (trouble == Trouble::Refuses) return Say("-ERR no\r\n");
  if (trouble == Trouble::HangsUp) return Hangup();
  if (trouble == Trouble::FallsSilent) return;
  const auto digits = line.find_first_of("0123456789");
  const std::string argument(digits < line.size() ? line.substr(digits) : "0");
  Say(Answer(line.substr(0, 4), std::stoul(argument)));
}

// RFC 1939, 5 and 7.
std::string MailboxPeer::Answer(std::string_view command, std::size_t number) {
  const auto list = [](const std::string& text) { return "+OK\r\n" + text + ".\r\n"; };
  if (command == "STAT")
    return "+OK " + std::to_string(listed_.size() - deleted_.size()) + " 1\r\n";
  if (command == "QUIT") {
    if (mailbox_->refusesToQuit) return "-ERR no\r\n";
    Leave();
  }
  const bool isUidl = command == "UIDL";
  if (isUidl && !mailbox_->knowsIdentifiers) return "-ERR what?\r\n";
  if (isUidl && number == 0) return list(ListIdentifiers());
  if (!isUidl && command != "TOP " && command != "RETR" && command != "DELE") return "+OK\r\n";
  if (number == 0 || number > listed_.size() || deleted_.contains(number)) return "-ERR none\r\n";
  const auto& message = listed_[number - 1];
  if (isUidl) return "+OK " + std::to_string(number) + " " + message.identifier + "\r\n";
  if (command == "DELE") {
    deleted_.insert(number);
    return "+OK\r\n";
  }
  if (command == "RETR") return list(message.text);
  return list(message.text.substr(0, message.text.find("\r\n\r\n") + 4));
}

std::string MailboxPeer::ListIdentifiers() const {
  std::string lines;
  for (std::size_t number = 1; number <= listed_.size(); ++number) {
    if (deleted_.contains(number)) continue;
    lines += std::to_string(number) + " " + listed_[number - 1].identifier + "\r\n";
  }
  return lines;
}

void MailboxPeer::Leave() {
  for (const auto number : deleted_) {
    std::erase_if(mailbox_->messages, [&](const auto& message) {
      return message.identifier == listed_[number - 1].identifier;
    });
  }
}

}  // namespace quillon::testing
