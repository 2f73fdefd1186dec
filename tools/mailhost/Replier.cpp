#include "Replier.h"

#include <algorithm>
#include <utility>

#include "FaultSources.h"

namespace mailhost {

namespace {

std::string AsMultiline(Protocol protocol, const std::string& text) {
  if (protocol == Protocol::kSmtp) return text.substr(0, 3) + "-more follows\r\n" + text;
  return text + "\r\nmore\r\n.";
}

}  // namespace

bool Replier::Enter(std::string_view step) {
  changes_ = {};
  connection_.Out().SetShape({});
  std::vector<const FaultRule*> rules = tracker_.Reach(step);
  // What takes the step's place comes last, so that it is delayed and cut like any other reply.
  std::stable_partition(rules.begin(), rules.end(),
                        [](const FaultRule* rule) { return !rule->action.TakesPlaceOfStep(); });
  return std::ranges::all_of(rules, [this](const FaultRule* rule) {
    connection_.ConversationLog().Event(protocol_, "fault: " + rule->text);
    return Apply(rule->action);
  });
}

bool Replier::Apply(const FaultAction& action) {
  Outbox& out = connection_.Out();
  switch (action.kind) {
    case FaultAction::Kind::kDelay:
      out.Pause(std::chrono::milliseconds(action.number));
      return true;
    case FaultAction::Kind::kSplit:
      out.SetShape(action.shape);
      changes_.shape = action.shape;
      return true;
    case FaultAction::Kind::kMultiline:
      changes_.multiline = true;
      return true;
    case FaultAction::Kind::kDropMid:
      changes_.dropMid = true;
      return true;
    case FaultAction::Kind::kDropAfter:
      changes_.dropAfter = true;
      return true;
    case FaultAction::Kind::kTruncate:
      changes_.truncate = action.number;
      return true;
    case FaultAction::Kind::kFlood:
      changes_.flood = &action;
      return true;
    case FaultAction::Kind::kReply:
      Reply(action.text);
      return false;
    case FaultAction::Kind::kDrop:
      out.Cut();
      return false;
    case FaultAction::Kind::kGarbage:
      out.Content(std::make_unique<GarbageSource>(action.number, action.lines));
      return false;
    case FaultAction::Kind::kStall:
      connection_.StopReading();
      return false;
    case FaultAction::Kind::kSilent:
      return false;
  }
  return true;
}

void Replier::Reply(std::string text) {
  asksForSecret_ = text.starts_with("334") || text == "+" || text.starts_with("+ ");
  if (changes_.multiline) text = AsMultiline(protocol_, text);
  SendCut(std::move(text) + "\r\n");
  if (changes_.flood != nullptr) Flood();
}

void Replier::ReplyLines(std::string head, const std::string& body) {
  head += "\r\n";
  if (changes_.flood != nullptr) {
    connection_.Out().Text(std::move(head));
    return Flood();
  }
  if (changes_.truncate) {
    const std::uint64_t size = std::min<std::uint64_t>(*changes_.truncate, body.size());
    connection_.Out().Text(head + body.substr(0, static_cast<std::size_t>(size)));
    connection_.Out().Cut();
    return;
  }
  SendCut(head + body + ".\r\n");
}

void Replier::ReplyContent(std::string head, std::unique_ptr<ByteSource> body) {
  Outbox& out = connection_.Out();
  out.Text(std::move(head) + "\r\n");
  if (changes_.flood != nullptr) return Flood();
  if (changes_.truncate || changes_.dropMid) {
    out.Content(std::make_unique<CutSource>(std::move(body), changes_.truncate));
    out.Cut();
    return;
  }
  out.Content(std::move(body));
  SendCut(".\r\n");
}

void Replier::Secure(std::unique_ptr<TlsSession> tls) {
  if (!Enter("HANDSHAKE")) {
    // What comes now are the client's bytes of a handshake that does not happen.
    connection_.StopListening();
    return;
  }
  connection_.Out().SetShape({});
  connection_.Secure(std::move(tls), {changes_.shape, changes_.truncate});
}

void Replier::Flood() {
  const FaultAction& flood = *changes_.flood;
  connection_.Out().Content(std::make_unique<FloodSource>(flood.text, flood.number));
}

void Replier::SendCut(std::string text) {
  if (changes_.dropMid) text.resize(text.size() / 2);
  connection_.Out().Text(std::move(text));
  if (changes_.dropMid || changes_.dropAfter) connection_.Out().Cut();
}

}  // namespace mailhost
