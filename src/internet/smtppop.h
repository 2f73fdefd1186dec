// The Internet engine: one SMTP session, one POP3 session and the composition of the message,
// behind operations that wait for their outcome by running the event loop. Texts are bytes as they
// go over the wire.
//
// Results are those of the sessions (MailSession.h, SmtpSession.h, PopSession.h) and 9 (no
// recipients), 555 (not a sender address). Thrown as ServerError, before anything is sent: 529 for
// CR, LF or NUL in an argument of a command; 521, 534 and 535 when the files of a message are
// missing or cannot be packed or encoded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "internet/HeaderCollector.h"
#include "internet/MessageCollector.h"
#include "internet/MessageComposer.h"
#include "internet/OutgoingMessage.h"
#include "internet/PopSession.h"
#include "internet/SmtpSession.h"
#include "mail/HeaderTable.h"

namespace quillon {

class smtppop : private StatusSink {
 public:
  // The protocol that the engine last worked with.
  enum class Protocol { None = 0, Pop = 1, Smtp = 2 };

  smtppop(EventLoop& loop, Network& network, const ComposerPorts& ports);

  std::int32_t LoginSMTP(const SmtpSettings& settings);
  std::int32_t LogoutSMTP();
  bool SMTPLoginStatus() const noexcept { return smtp_.LoginStatus(); }
  std::int32_t Send(SmtpSettings settings, OutgoingMessage message,
                    const ComposerSettings& composing, const std::string& envelopeRecipient);
  // The name's address as the server gives it; empty when it does not know the name.
  std::int32_t ResolveAddress(const SmtpSettings& settings, const std::string& name,
                              std::string& resolved);
  const std::vector<std::string>& RefusedRecipients() const { return smtp_.RefusedRecipients(); }

  std::int32_t LoginPOP(const PopSettings& settings);
  std::int32_t LogoutPOP();
  bool POPLoginStatus() const noexcept { return pop_.LoginStatus(); }
  // On failure the collector holds what had come before.
  std::int32_t LoadMessageHeaders(const PopSettings& settings, const HeaderRequest& request,
                                  HeaderCollector& headers);
  std::int32_t LoadMessage(const PopSettings& settings, std::uint32_t number, MessageSink& message);
  std::int32_t DeleteMessage(const PopSettings& settings, std::uint32_t number);
  const std::string& LastPOPErrorDescription() const { return pop_.LastErrorDescription(); }

  // Ends the running operation with 522.
  void Abort();

  // Leaves both servers, in `patience` milliseconds at most.
  void Shutdown(TickCount patience);

  Protocol ProtocolSelector() const noexcept { return protocol_; }

 private:
  void OnStatus(std::string_view) override {}  // where progress and notification will listen

  void Enter(Protocol protocol);
  template <typename Session>
  std::int32_t WaitFor(Session& session, TickCount deadline = kNoDeadline);

  EventLoop& loop_;
  ComposerPorts ports_;
  SmtpSession smtp_;
  PopSession pop_;
  Protocol protocol_ = Protocol::None;
};

}  // namespace quillon
