#include "ScriptSession.h"

#include <utility>

#include "SmtpPath.h"
#include "Text.h"

namespace mailhost {

using Kind = ConversationStep::Kind;

ScriptSession::ScriptSession(Connection& connection, const Conversation& conversation,
                             std::unique_ptr<TlsSession> tls, BeginDelivery begin,
                             OnMismatch onMismatch)
    : connection_(connection),
      conversation_(conversation),
      tls_(std::move(tls)),
      onMismatch_(std::move(onMismatch)),
      content_(connection.ConversationLog(), std::move(begin)) {}

void ScriptSession::OnOpen() {
  if (tls_) {
    connection_.Secure(std::move(tls_), {});
  } else {
    Play();
  }
}

void ScriptSession::Play() {
  for (; next_ < conversation_.steps.size(); ++next_) {
    const ConversationStep& step = conversation_.steps[next_];
    if (step.kind == Kind::kExpect) return;
    if (step.kind == Kind::kContent) {
      if (!content_.Begin()) Mismatch("what cannot be stored");
      return;
    }
    Say(step);
  }
}

void ScriptSession::Say(const ConversationStep& step) {
  Outbox& out = connection_.Out();
  switch (step.kind) {
    case Kind::kSend:
      out.Text(step.text);
      asksForSecret_ = step.text.starts_with("334") || step.text.starts_with("+ ");
      // Lines that are written one by one must not meet in one write.
      if (shape_.kind == Shape::Kind::kLine) out.Pause(shape_.gap);
      break;
    case Kind::kWait:
      out.Pause(step.wait);
      break;
    case Kind::kShape:
      shape_ = step.shape;
      out.SetShape(shape_);
      break;
    case Kind::kClose:
      out.Close();
      break;
    case Kind::kExpect:
    case Kind::kContent:
      break;
  }
}

void ScriptSession::OnLine(std::string_view line) {
  if (next_ >= conversation_.steps.size() || !conversation_.steps[next_].pattern->Matches(line)) {
    const std::string shown =
        asksForSecret_ ? std::string(kMasked) : Masked(conversation_.protocol, line);
    Mismatch("\"" + shown + "\"");
    return;
  }
  NoteEnvelope(line);
  ++next_;
  Play();
}

std::size_t ScriptSession::OnContent(std::string_view bytes) {
  const std::size_t used = content_.Take(bytes);
  if (!content_.Active()) {
    if (!content_.Commit(std::exchange(envelope_, {}))) {
      Mismatch("what cannot be stored");
      return used;
    }
    ++next_;
    Play();
  }
  return used;
}

void ScriptSession::OnClientGone() {
  if (!failed_ && next_ < conversation_.steps.size()) Mismatch("the end of the connection");
}

// The envelope is kept with the message, as far as the client has told one.
void ScriptSession::NoteEnvelope(std::string_view line) {
  std::string_view argument = line;
  const std::string_view word = TakeWord(argument);
  if (EqualIgnoringCase(word, "MAIL")) {
    const auto path = ParseSmtpPath(argument, "FROM:");
    envelope_ = {{path ? path->address : ""}, {}};
  } else if (EqualIgnoringCase(word, "RCPT")) {
    const auto path = ParseSmtpPath(argument, "TO:");
    if (path) envelope_.recipients.push_back({path->address});
  }
}

void ScriptSession::Mismatch(std::string_view found) {
  failed_ = true;
  const bool atEnd = next_ >= conversation_.steps.size();
  const std::size_t last = conversation_.steps.empty() ? 1 : conversation_.steps.back().line;
  const std::size_t line = atEnd ? last : conversation_.steps[next_].line;
  std::string text = conversation_.file + ":" + std::to_string(line) + ": expected ";
  if (atEnd) {
    text += "nothing more";
  } else if (conversation_.steps[next_].kind == Kind::kContent) {
    text += "message content";
  } else {
    text += "\"" + conversation_.steps[next_].text + "\"";
  }
  text.append(", received ").append(found);
  onMismatch_(text);
  connection_.Out().Close();
}

}  // namespace mailhost
