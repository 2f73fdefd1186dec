#include "internet/PopSession.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "core/Text.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

constexpr std::uint64_t kProgressBytes = 16U * 1024;  // of a message, between two words about it

// What one header or one list of identifiers may take: far more than any mailbox has, and little
// enough to hold.
constexpr std::uint64_t kMostListBytes = 64U * 1024 * 1024;

}  // namespace

Task<SessionResult> PopSession::Login(PopSettings settings) {
  co_return co_await OnAccount(std::move(settings), []() -> Task<> { co_return; });
}

Task<SessionResult> PopSession::Headers(PopSettings settings, HeaderRequest request,
                                        HeaderSink& sink) {
  co_return co_await OnAccount(std::move(settings), [&] { return ReadHeaders(request, sink); });
}

Task<SessionResult> PopSession::Message(PopSettings settings, std::uint32_t number,
                                        MessageSink& sink) {
  co_return co_await OnAccount(std::move(settings), [&] { return ReadMessage(number, sink); });
}

Task<SessionResult> PopSession::Delete(PopSettings settings, std::uint32_t number) {
  co_return co_await OnAccount(std::move(settings), [&] { return MarkDeleted(number); });
}

Task<SessionResult> PopSession::Logout() {
  co_return co_await Part([this] { return Quit(); });
}

Task<SessionResult> PopSession::OnAccount(PopSettings settings, Dialogue dialogue) {
  lastError_.clear();
  if (settings.loginName != loginName_ || settings.password != password_) TakeLeave();
  loginName_ = settings.loginName;
  password_ = settings.password;
  co_return co_await Converse(std::move(settings), std::move(dialogue));
}

// RFC 1939, 4 and 7.
Task<> PopSession::LogIn() {
  deleted_.clear();
  auto reply = co_await Reply();
  if (!reply.positive) {
    Log("The server port is not a POP server.  Here is the server response:", reply.words);
    Refused(internet_error::kNotPop, reply, Connection::TakesLeave);
  }
  reply = co_await Command("USER " + loginName_);
  if (reply.positive) {
    Say("PASS " + password_, "PASS ****");
    reply = co_await Reply();
    if (reply.positive) {
      Status("Connected to server...");
      co_return LoggedIn();
    }
    Status("Failed to Logon to POP server.");
    const bool busy = UpperAscii(reply.words).find("BUSY") != std::string::npos;
    Refused(busy ? internet_error::kMaildropBusy : internet_error::kPasswordRefused, reply,
            Connection::TakesLeave);
  }
  Status("Failed to Logon to POP server.");
  Refused(internet_error::kNameRefused, reply, Connection::TakesLeave);
}

Task<> PopSession::ReadHeaders(HeaderRequest request, HeaderSink& sink) {
  if (request.kind == HeaderRequest::Kind::Identifiers) {
    co_await ReadIdentifiers(sink);
    co_return;
  }
  Status("Loading message headers...");
  std::uint32_t number = request.number;
  std::uint64_t last = request.number;
  if (request.kind == HeaderRequest::Kind::All) {
    const auto reply = co_await Command("STAT");
    if (!reply.positive) Refused(internet_error::kStatisticsFailed, reply, Connection::Stays);
    std::string_view words = reply.words;
    const auto count = TakeNumber(words);
    if (!count) Refused(internet_error::kInvalidPopReply, reply, Connection::TakesLeave);
    if (*count == 0) {
      Status("Mailbox is empty.");
      co_return;
    }
    // What was deleted in this session is no longer counted, and keeps its number.
    last = std::min<std::uint64_t>(*count + deleted_.size(),
                                   std::numeric_limits<std::uint32_t>::max() - 1);
    number = 1;
  }
  bool goesOn = true;
  for (number = AfterDeleted(number); goesOn && number <= last; number = AfterDeleted(number + 1)) {
    co_await ReadHeader(number, sink);
    Progress(number, last, number);
    goesOn = sink.OnHeaderEnd(number);
  }
  sink.OnNextRequested();
  Status("Headers loaded successfully.");
}

std::uint32_t PopSession::AfterDeleted(std::uint32_t number) const {
  while (deleted_.contains(number)) ++number;
  return number;
}

Task<> PopSession::ReadHeader(std::uint32_t number, HeaderSink& sink) {
  Say("TOP " + std::to_string(number) + " 0");
  sink.OnNextRequested();
  const auto reply = co_await Reply();
  if (!reply.positive) Refused(internet_error::kTopFailed, reply, Connection::Stays);
  bool inHeader = true;
  co_await ReadList([&](const Heard& line) {
    if (line.starts && line.text.empty()) inHeader = false;
    if (inHeader) sink.OnHeaderLine(number, line.text, line.completes);
  });
}

Task<> PopSession::ReadIdentifiers(HeaderSink& sink) {
  Status("Loading message identifiers...");
  const auto reply = co_await Command("UIDL");
  if (!reply.positive) Refused(internet_error::kIdentifiersFailed, reply, Connection::Stays);
  co_await ReadList([&](const Heard& line) {
    if (!line.starts) return;
    auto identifier = line.text;
    const auto number = TakeNumber(identifier).value_or(0);
    if (number == 0 || number > std::numeric_limits<std::uint32_t>::max()) return;
    sink.OnIdentifier(static_cast<std::uint32_t>(number), identifier);
  });
  Status("Identifiers loaded successfully.");
}

Task<> PopSession::ReadList(std::function<void(const Heard&)> take) {
  AwaitReply();
  std::uint64_t bytes = 0;
  for (;;) {
    auto& line = co_await NextData();
    if (!IsContent(line)) co_return;
    bytes += line.text.size() + 2;
    if (bytes > kMostListBytes) throw SessionFailure{internet_error::kOverflow};
    take(line);
  }
}

Task<> PopSession::ReadMessage(std::uint32_t number, MessageSink& sink) {
  Status("Loading message...");
  const auto reply = co_await Command("RETR " + std::to_string(number));
  if (!reply.positive) Refused(internet_error::kRetrieveFailed, reply, Connection::Stays);
  std::string_view words = reply.words;
  const auto size = TakeNumber(words).value_or(0);  // 0: the server does not tell
  Status("Receiving message...");
  AwaitReply();
  bool hasAttachments = false;
  std::uint64_t bytes = 0;
  std::uint64_t nextProgress = 0;
  for (;;) {
    auto& line = co_await NextData();
    if (!IsContent(line)) break;
    bytes += line.text.size() + 2;
    const auto failure = sink.OnMessageLine(line.text, line.completes);
    if (failure != 0) throw SessionFailure{failure};
    if (bytes >= nextProgress) {
      nextProgress = bytes + kProgressBytes;
      Progress(bytes, size, number);
    }
    if (!hasAttachments && sink.InAttachment()) {
      hasAttachments = true;
      Status("Receiving attachments...");
    }
  }
  if (hasAttachments) Status("Decoding attachments...");
  const auto failure = sink.OnMessageEnd();
  if (failure != 0) throw SessionFailure{failure, Connection::Stays};
  Status("Message loaded successfully.");
}

Task<> PopSession::MarkDeleted(std::uint32_t number) {
  Status("Deleting message...");
  const auto reply = co_await Command("DELE " + std::to_string(number));
  if (!reply.positive) Refused(internet_error::kDeleteFailed, reply, Connection::Stays);
  deleted_.insert(number);
  Status("Message deleted successfully.");
}

// The deletions become final with the server's yes, and only then (RFC 1939, 6).
Task<> PopSession::Quit() {
  try {
    const auto reply = co_await Command("QUIT");
    if (!reply.positive) Refused(internet_error::kQuitFailed, reply, Connection::IsClosed);
  } catch (const ConnectionLost&) {
    if (!deleted_.empty()) throw SessionFailure{internet_error::kQuitFailed};
  }
}

Task<PopReply> PopSession::Command(std::string line) {
  Say(line);
  co_return co_await Reply();
}

Task<PopReply> PopSession::Reply() {
  const auto& heard = co_await NextLine();
  Log("", heard.text);
  StopWaiting();
  co_return PopReply(heard.text);
}

// RFC 1939, 3. A message may hold bare line feeds, between which a dot is just a dot: if it ended
// the message, the rest of that would be taken for the server's words.
bool PopSession::IsContent(Heard& line) {
  Log("", line.text);
  if (!line.starts) return true;
  if (line.completes && line.text == ".") return !Socket().IsBetweenCrLfs();
  if (line.text.starts_with('.')) line.text.remove_prefix(1);
  return true;
}

void PopSession::Refused(std::int32_t number, const PopReply& reply, Connection connection) {
  lastError_ = reply.words;
  throw SessionFailure{number, connection, reply.words};
}

}  // namespace quillon
