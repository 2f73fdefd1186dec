// The Internet engine: one SMTP session, one POP3 session and the composition of the message. An
// operation is begun, works by events, and is done with a result; one at a time. Texts are bytes as
// they go over the wire.
//
// Results are those of the sessions (MailSession.h, SmtpSession.h, PopSession.h) and 9 (no
// recipients), 555 (not a sender address). Thrown as ServerError when an operation is begun: 529
// for CR, LF or NUL in an argument of a command, 521 for a file of a message that is missing. 534
// and 535 (the files of a message cannot be packed or encoded) are thrown in place of the result;
// nothing has been sent then.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "codec/HeaderTable.h"
#include "internet/HeaderCollector.h"
#include "internet/MessageCollector.h"
#include "internet/MessageComposer.h"
#include "internet/OutgoingMessage.h"
#include "internet/PopSession.h"
#include "internet/SmtpSession.h"

namespace quillon {

class smtppop : private SessionListener {
 public:
  // The protocol that the engine last worked with.
  enum class Protocol { None = 0, Pop = 1, Smtp = 2 };

  // `listener` hears what the sessions are doing; null when nobody cares.
  smtppop(EventLoop& loop, Network& network, const ComposerPorts& ports,
          SessionListener* listener = nullptr);
  ~smtppop() override;

  void BeginLoginSMTP(const SmtpSettings& settings);
  void BeginLogoutSMTP();
  void BeginSend(SmtpSettings settings, OutgoingMessage message, const ComposerSettings& composing,
                 const std::string& envelopeRecipient);
  void BeginResolveAddress(const SmtpSettings& settings, const std::string& name);
  bool SMTPLoginStatus() const noexcept { return smtp_.LoginStatus(); }
  // The name's address as the server gave it; empty when it does not know the name.
  const std::string& ResolvedAddress() const { return smtp_.Resolved(); }
  const std::vector<std::string>& RefusedRecipients() const { return smtp_.RefusedRecipients(); }

  void BeginLoginPOP(const PopSettings& settings);
  void BeginLogoutPOP();
  // What collects must live until the operation is done. On failure it holds what had come before.
  void BeginLoadMessageHeaders(const PopSettings& settings, const HeaderRequest& request,
                               HeaderCollector& headers);
  void BeginLoadMessage(const PopSettings& settings, std::uint32_t number, MessageSink& message);
  void BeginDeleteMessage(const PopSettings& settings, std::uint32_t number);
  bool POPLoginStatus() const noexcept { return pop_.LoginStatus(); }
  const std::string& LastPOPErrorDescription() const { return pop_.LastErrorDescription(); }

  // Runs the event loop until the operation is done, or the deadline, which aborts it.
  std::int32_t Wait(TickCount deadline = kNoDeadline);

  // Calls, from the event loop, when the operation that was begun is done: TakeResult gives its
  // result. Null: nobody waits.
  void WhenDone(std::function<void()> call);
  std::int32_t TakeResult();

  // Ends the running operation with 522.
  void Abort();

  // Leaves both servers, in `patience` milliseconds at most.
  void Shutdown(TickCount patience);

  Protocol ProtocolSelector() const noexcept { return protocol_; }

 private:
  void OnStatus(std::string_view text) override;
  void OnProgress(std::uint64_t done, std::uint64_t total, std::uint32_t message) override;
  void OnFinished() override { CallBack(); }

  void Enter(Protocol protocol);
  bool Done() const;
  void Compose();
  void SendComposed();
  void CallBack();

  EventLoop& loop_;
  ComposerPorts ports_;
  SessionListener* listener_;
  SmtpSession smtp_;
  PopSession pop_;
  Protocol protocol_ = Protocol::None;
  std::optional<std::int32_t> refusal_;  // the result of an operation that no session took up
  std::exception_ptr failure_;           // or what is thrown in its place
  struct Composition;                    // a message before it is sent
  std::shared_ptr<Composition> composition_;
  Timer turn_;                         // when the work on it goes on
  std::unique_ptr<MessageData> data_;  // of the message that is being sent
  std::shared_ptr<std::function<void()>> whenDone_;
};

}  // namespace quillon
