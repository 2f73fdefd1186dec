// The server's side of SMTP (RFC 5321), with the extensions of its service. Every recipient is
// taken.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ContentReceiver.h"
#include "Delivery.h"
#include "LoginDialogue.h"
#include "Replier.h"
#include "Service.h"
#include "Session.h"

namespace mailhost {

class SmtpSession : public Session {
 public:
  // `service` must outlive the session. With `secured` TLS comes before anything else.
  SmtpSession(Connection& connection, const Service& service, bool secured, BeginDelivery begin);

  void OnOpen() override;
  void OnSecured() override;
  void OnLine(std::string_view line) override;
  void OnBadLine(std::string_view why) override;
  bool ExpectsSecret() const override { return login_.Active() || replier_.AsksForSecret(); }
  bool WantsContent() const override { return content_.Active(); }
  std::size_t OnContent(std::string_view bytes) override;

 private:
  struct Command;
  static const Command kCommands[];

  void Helo(std::string_view argument);
  void Ehlo(std::string_view argument);
  void StartTls(std::string_view argument);
  void Auth(std::string_view argument);
  void Mail(std::string_view argument);
  void Rcpt(std::string_view argument);
  void Data(std::string_view argument);
  void Bdat(std::string_view argument);
  void Rset(std::string_view argument);
  void Noop(std::string_view argument);
  void Vrfy(std::string_view argument);
  void Help(std::string_view argument);
  void Quit(std::string_view argument);

  bool Offers(std::string_view word) const;
  void Welcome();
  std::string Capabilities() const;
  // Replies with what is wrong and returns false, or returns true.
  bool MailMayStart(std::string_view argument);
  bool LoginMayStart();
  void Response(std::string_view line);
  void AnswerLogin(const LoginDialogue::Answer& answer);
  void Greet(std::string_view argument, std::string reply);
  void ResetTransaction();
  void EndChunk();
  void EndContent();
  // A reply, with a status code of RFC 2034 when they are offered.
  void Say(std::string reply);

  Connection& connection_;
  const Service& service_;
  bool opensSecured_;
  Replier replier_;
  LoginDialogue login_;
  bool loggedIn_ = false;
  int refusedLogins_ = 0;
  bool greeted_ = false;
  bool hasSender_ = false;
  Envelope envelope_;
  ContentReceiver content_;
  bool inBody_ = false;       // the first bytes of the content have come
  bool ignoresBody_ = false;  // a fault has taken its place
  bool isChunk_ = false;      // the content is one of BDAT
  bool isLastChunk_ = false;
  std::string chunkRefusal_{};  // the reply to a chunk that is read and dropped
};

}  // namespace mailhost
