// The Internet engine: one SMTP session, one POP3 session and the composition of the message. Each
// operation is a Task; one runs at a time. Texts are bytes as they go over the wire.
//
// Results are those of the sessions (MailSession.h, SmtpSession.h, PopSession.h) and 9 (no
// recipients), 555 (not a sender address). What is wrong with a call itself is thrown as
// ServerError when its Task is made: 529 for CR, LF or NUL in an argument of a command, 521 for a
// file of a message that is missing. 534 and 535 (the files of a message cannot be packed or
// encoded) are thrown by the Task; nothing has been sent then.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/Gate.h"
#include "core/Operation.h"
#include "internet/HeaderCollector.h"
#include "internet/MessageCollector.h"
#include "internet/MessageComposer.h"
#include "internet/OutgoingMessage.h"
#include "internet/PopSession.h"
#include "internet/SmtpSession.h"

namespace quillon {

class smtppop {
 public:
  // The protocol that the engine last worked with.
  enum class Protocol { None = 0, Pop = 1, Smtp = 2 };

  // `listener` hears what the sessions are doing.
  smtppop(EventLoop& loop, Network& network, const SecurityPorts& security,
          const ComposerPorts& ports, SessionListener& listener);

  Task<SessionResult> LoginSMTP(const SmtpSettings& settings);
  Task<SessionResult> LogoutSMTP();  // cannot fail
  Task<SessionResult> Send(SmtpSettings settings, OutgoingMessage message,
                           const ComposerSettings& composing, const std::string& envelopeRecipient);
  Task<SessionResult> ResolveAddress(const SmtpSettings& settings, const std::string& name);
  bool SMTPLoginStatus() const noexcept { return smtp_.LoginStatus(); }
  // The name's address as the server gave it; empty when it does not know the name.
  const std::string& ResolvedAddress() const { return smtp_.Resolved(); }
  const std::vector<std::string>& RefusedRecipients() const { return smtp_.RefusedRecipients(); }

  Task<SessionResult> LoginPOP(PopSettings settings);
  Task<SessionResult> LogoutPOP();
  // What collects must live as long as the Task. On failure it holds what had come before.
  Task<SessionResult> LoadMessageHeaders(PopSettings settings, HeaderRequest request,
                                         HeaderCollector& headers);
  Task<SessionResult> LoadMessage(PopSettings settings, MessageKey key, MessageSink& message,
                                  std::string* identifier = nullptr);
  Task<SessionResult> DeleteMessage(PopSettings settings, MessageKey key);
  bool POPLoginStatus() const noexcept { return pop_.LoginStatus(); }
  // Of the protocol that the engine last worked with.
  const SessionReport& Report() const noexcept {
    return protocol_ == Protocol::Pop ? pop_.Report() : smtp_.Report();
  }
  // Counts the POP sessions.
  std::uint64_t POPSession() const noexcept { return pop_.Number(); }
  const std::string& LastPOPErrorDescription() const { return pop_.LastErrorDescription(); }

  // Leaves both servers, in `patience` milliseconds at most; runs the event loop meanwhile. Nothing
  // may be under way. An operation that is begun out of that loop waits for the end of it.
  void Shutdown(TickCount patience);

  Protocol ProtocolSelector() const noexcept { return protocol_; }

 private:
  Task<SessionResult> OnSmtp(SmtpSettings settings, Task<SessionResult> operation);
  Task<SessionResult> OnPop(Task<SessionResult> operation);
  Task<SessionResult> ComposeAndSend(SmtpSettings settings, Envelope envelope,
                                     std::unique_ptr<MessageComposer> composer);
  Task<> Compose(MessageComposer& composer);
  void OnLeft();

  EventLoop& loop_;
  ComposerPorts ports_;
  SessionListener& listener_;
  SmtpSession smtp_;
  PopSession pop_;
  Protocol protocol_ = Protocol::None;
  Gate left_;  // closed while the servers are being left
  Operation<SessionResult> leaving_;
  Timer leaveTimer_;
};

}  // namespace quillon
