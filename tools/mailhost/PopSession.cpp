#include "PopSession.h"

#include <utility>

#include "Digest.h"
#include "MessageReader.h"
#include "Text.h"

namespace mailhost {

namespace {

constexpr int kMaxRefusedLogins = 10;

}  // namespace

struct PopSession::Command {
  std::string_view word;
  State state;
  void (PopSession::*run)(std::string_view argument);
};

const PopSession::Command PopSession::kCommands[] = {
    {"USER", State::kAuthorization, &PopSession::User},
    {"PASS", State::kAuthorization, &PopSession::Pass},
    {"APOP", State::kAuthorization, &PopSession::Apop},
    {"AUTH", State::kAuthorization, &PopSession::Auth},
    {"STLS", State::kAuthorization, &PopSession::Stls},
    {"STAT", State::kTransaction, &PopSession::Stat},
    {"LIST", State::kTransaction, &PopSession::List},
    {"UIDL", State::kTransaction, &PopSession::Uidl},
    {"TOP", State::kTransaction, &PopSession::Top},
    {"RETR", State::kTransaction, &PopSession::Retr},
    {"DELE", State::kTransaction, &PopSession::Dele},
    {"RSET", State::kTransaction, &PopSession::Rset},
    {"NOOP", State::kTransaction, &PopSession::Noop},
    {"CAPA", State::kTransaction, &PopSession::Capa},
    {"CAPA", State::kAuthorization, &PopSession::Capa},
    {"QUIT", State::kTransaction, &PopSession::Quit},
    {"QUIT", State::kAuthorization, &PopSession::Quit},
};

PopSession::PopSession(Connection& connection, const Service& service, bool secured,
                       Maildrop& maildrop)
    : connection_(connection),
      service_(service),
      opensSecured_(secured),
      replier_(connection, service.rules, Protocol::kPop),
      login_(service),
      timestamp_(service.offersApop ? "<" + Hex(RandomBytes(8)) + "@mailhost>" : ""),
      maildrop_(maildrop) {}

PopSession::~PopSession() {
  LeaveMaildrop();
}

void PopSession::OnOpen() {
  if (opensSecured_) {
    replier_.Secure(service_.tls->NewSession());
  } else {
    Welcome();
  }
}

void PopSession::OnSecured() {
  user_.reset();
  if (std::exchange(opensSecured_, false)) Welcome();
}

void PopSession::Welcome() {
  const std::string stamp = timestamp_.empty() ? "" : " " + timestamp_;
  if (replier_.Enter("GREETING")) replier_.Reply("+OK POP3 mailhost" + stamp);
}

void PopSession::OnLine(std::string_view line) {
  if (ExpectsSecret()) {
    Response(line);
    return;
  }
  const std::size_t blank = line.find(' ');
  const std::string word = ToUpper(line.substr(0, blank));
  // PASS takes all of the rest, blanks and all (RFC 1939 7).
  const std::string_view argument =
      blank == std::string_view::npos ? std::string_view() : line.substr(blank + 1);
  if (!replier_.Enter(word)) return;
  bool known = false;
  for (const Command& command : kCommands) {
    if (word != command.word || !Offers(word)) continue;
    known = true;
    if (command.state != state_) continue;
    (this->*command.run)(argument);
    return;
  }
  replier_.Reply(known ? "-ERR not now" : "-ERR command not recognized");
}

void PopSession::OnBadLine(std::string_view why) {
  replier_.Reply("-ERR " + std::string(why));
}

bool PopSession::Offers(std::string_view word) const {
  if (word == "STLS") return service_.offersTls && connection_.Tls() == nullptr;
  if (word == "AUTH") return !service_.mechanisms.empty();
  return word != "APOP" || service_.offersApop;
}

void PopSession::User(std::string_view argument) {
  if (LacksTls()) {
    replier_.Reply("-ERR STLS first");
    return;
  }
  if (Trim(argument).empty()) {
    replier_.Reply("-ERR a name is needed");
    return;
  }
  user_ = Trim(argument);
  replier_.Reply("+OK now the password");
}

void PopSession::Pass(std::string_view argument) {
  const std::optional<std::string> user = std::exchange(user_, std::nullopt);
  if (!user) {
    replier_.Reply("-ERR USER first");
  } else {
    EndLogin(service_.account.Accepts(*user, argument));
  }
}

// RFC 1939 7: the digest of the greeting's timestamp and the password.
void PopSession::Apop(std::string_view argument) {
  if (LacksTls()) {
    replier_.Reply("-ERR STLS first");
    return;
  }
  const std::string_view name = TakeWord(argument);
  const Account& account = service_.account;
  EndLogin(name == account.user && argument == Hex(Hash(EVP_md5(), timestamp_ + account.password)));
}

void PopSession::Auth(std::string_view argument) {
  if (LacksTls()) {
    replier_.Reply("-ERR STLS first");
  } else {
    AnswerLogin(login_.Begin(argument, connection_.Tls()));
  }
}

void PopSession::Response(std::string_view line) {
  if (!replier_.Enter("RESPONSE")) {
    login_.GiveUp();
  } else if (login_.Active()) {
    AnswerLogin(login_.Continue(line));
  } else {
    // A fault has asked for it.
    EndLogin(false);
  }
}

void PopSession::AnswerLogin(const LoginDialogue::Answer& answer) {
  using Kind = LoginDialogue::Kind;
  switch (answer.kind) {
    case Kind::kChallenge:
      return replier_.Reply("+ " + answer.challenge);
    case Kind::kUnknown:
      return replier_.Reply("-ERR there is no such mechanism");
    case Kind::kMalformed:
      return replier_.Reply("-ERR this is no base64");
    case Kind::kCancelled:
      return replier_.Reply("-ERR login cancelled");
    case Kind::kAccepted:
    case Kind::kRefused:
      return EndLogin(answer.kind == Kind::kAccepted);
  }
}

void PopSession::EndLogin(bool good) {
  if (!good) {
    replier_.Reply("-ERR wrong name or password");
    if (++refusedLogins_ == kMaxRefusedLogins) replier_.Finish();
  } else if (maildrop_.exclusive && maildrop_.taken) {
    replier_.Reply("-ERR [IN-USE] the maildrop is busy");
  } else {
    OpenMaildrop();
    replier_.Reply("+OK " + Summary());
  }
}

void PopSession::Stls(std::string_view /*argument*/) {
  replier_.Reply("+OK begin TLS");
  replier_.Secure(service_.tls->NewSession());
}

void PopSession::OpenMaildrop() {
  holdsMaildrop_ = maildrop_.exclusive;
  maildrop_.taken = maildrop_.taken || holdsMaildrop_;
  if (maildrop_.store != nullptr) messages_ = maildrop_.store->List();
  state_ = State::kTransaction;
  deleted_.assign(messages_.size(), false);
  remaining_ = messages_.size();
  remainingSize_ = 0;
  for (const StoredMessage& message : messages_) remainingSize_ += message.size;
}

void PopSession::LeaveMaildrop() {
  if (std::exchange(holdsMaildrop_, false)) maildrop_.taken = false;
}

std::string PopSession::Summary() const {
  return std::to_string(remaining_) + " messages (" + std::to_string(remainingSize_) + " octets)";
}

void PopSession::Stat(std::string_view /*argument*/) {
  replier_.Reply("+OK " + std::to_string(remaining_) + " " + std::to_string(remainingSize_));
}

template <typename Value>
void PopSession::ReplyListing(std::string_view argument, Value value) {
  if (!Trim(argument).empty()) {
    const auto index = FindMessage(argument);
    if (index) replier_.Reply("+OK " + std::to_string(*index + 1) + " " + value(messages_[*index]));
    return;
  }
  std::string lines;
  for (std::size_t i = 0; i < messages_.size(); ++i) {
    if (deleted_[i]) continue;
    lines.append(std::to_string(i + 1)).append(" ").append(value(messages_[i])).append("\r\n");
  }
  replier_.ReplyLines("+OK " + Summary(), lines);
}

void PopSession::List(std::string_view argument) {
  ReplyListing(argument, [](const StoredMessage& message) { return std::to_string(message.size); });
}

void PopSession::Uidl(std::string_view argument) {
  ReplyListing(argument, [](const StoredMessage& message) { return message.id; });
}

std::optional<std::size_t> PopSession::FindMessage(std::string_view number) {
  const auto value = ParseNumber(Trim(number));
  if (!value || *value == 0 || *value > messages_.size()) {
    replier_.Reply("-ERR no such message");
    return std::nullopt;
  }
  if (deleted_[*value - 1]) {
    replier_.Reply("-ERR the message is deleted");
    return std::nullopt;
  }
  return *value - 1;
}

UniqueFd PopSession::OpenMessage(std::size_t index) {
  UniqueFd file = maildrop_.store->Open(messages_[index]);
  if (!file) replier_.Reply("-ERR the message is gone");
  return file;
}

void PopSession::Top(std::string_view argument) {
  std::string_view count = argument;
  const std::string_view number = TakeWord(count);
  const auto lines = ParseNumber(count);
  if (!lines) {
    replier_.Reply("-ERR TOP message lines is needed");
    return;
  }
  const auto index = FindMessage(number);
  if (!index) return;
  UniqueFd file = OpenMessage(*index);
  if (!file) return;
  replier_.ReplyContent("+OK top of the message follows",
                        std::make_unique<MessageReader>(std::move(file), *lines));
}

void PopSession::Retr(std::string_view argument) {
  const auto index = FindMessage(argument);
  if (!index) return;
  UniqueFd file = OpenMessage(*index);
  if (!file) return;
  replier_.ReplyContent("+OK " + std::to_string(messages_[*index].size) + " octets",
                        std::make_unique<MessageReader>(std::move(file)));
}

void PopSession::Dele(std::string_view argument) {
  const auto index = FindMessage(argument);
  if (!index) return;
  deleted_[*index] = true;
  --remaining_;
  remainingSize_ -= messages_[*index].size;
  replier_.Reply("+OK deleted");
}

void PopSession::Rset(std::string_view /*argument*/) {
  for (std::size_t i = 0; i < messages_.size(); ++i) {
    if (!deleted_[i]) continue;
    deleted_[i] = false;
    ++remaining_;
    remainingSize_ += messages_[i].size;
  }
  replier_.Reply("+OK " + Summary());
}

void PopSession::Noop(std::string_view /*argument*/) {
  replier_.Reply("+OK");
}

void PopSession::Capa(std::string_view /*argument*/) {
  std::string lines;
  for (const std::string& capability : service_.popCapabilities) {
    if (capability != "USER" || !LacksTls()) lines.append(capability).append("\r\n");
  }
  if (Offers("STLS")) lines += "STLS\r\n";
  std::string logins;
  for (const std::string& name : OfferedMechanisms(service_, connection_.Tls())) {
    logins.append(" ").append(name);
  }
  if (!logins.empty()) lines.append("SASL").append(logins).append("\r\n");
  replier_.ReplyLines("+OK capabilities follow", lines);
}

void PopSession::Quit(std::string_view /*argument*/) {
  const bool removed = RemoveDeleted();
  LeaveMaildrop();
  replier_.Reply(removed ? "+OK bye" : "-ERR some deleted messages are not removed");
  replier_.Finish();
}

bool PopSession::RemoveDeleted() {
  bool removed = true;
  for (std::size_t i = 0; i < messages_.size(); ++i) {
    if (deleted_[i]) removed = maildrop_.store->Remove(messages_[i]) && removed;
  }
  return removed;
}

}  // namespace mailhost
