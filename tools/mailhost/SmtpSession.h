// The server's side of SMTP (RFC 5321), with SIZE, 8BITMIME and PIPELINING. Every recipient is
// taken.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ContentReceiver.h"
#include "Delivery.h"
#include "Replier.h"
#include "Session.h"

namespace mailhost {

class SmtpSession : public Session {
 public:
  // `rules` must outlive the session.
  SmtpSession(Connection& connection, const std::vector<FaultRule>& rules, BeginDelivery begin);

  void OnOpen() override;
  void OnLine(std::string_view line) override;
  void OnBadLine(std::string_view why) override;
  bool WantsContent() const override { return content_.Active(); }
  std::size_t OnContent(std::string_view bytes) override;

 private:
  struct Command;
  static const Command kCommands[];

  void Helo(std::string_view argument);
  void Ehlo(std::string_view argument);
  void Mail(std::string_view argument);
  void Rcpt(std::string_view argument);
  void Data(std::string_view argument);
  void Rset(std::string_view argument);
  void Noop(std::string_view argument);
  void Vrfy(std::string_view argument);
  void Help(std::string_view argument);
  void Quit(std::string_view argument);

  // Replies with what is wrong and returns false, or returns true.
  bool MailMayStart(std::string_view argument);
  void Greet(std::string_view argument, std::string reply);
  void ResetTransaction();
  void EndContent();

  Replier replier_;
  bool greeted_ = false;
  bool hasSender_ = false;
  Envelope envelope_;
  ContentReceiver content_;
  bool inBody_ = false;       // the first bytes of the content have come
  bool ignoresBody_ = false;  // a fault has taken its place
};

}  // namespace mailhost
