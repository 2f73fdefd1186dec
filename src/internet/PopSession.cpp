#include "internet/PopSession.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <utility>

#include "core/ErrorCode.h"
#include "core/Text.h"
#include "internet/HeaderCollector.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

constexpr std::uint64_t kProgressBytes = 16U * 1024;  // of a message, between two words about it

// What one header or one list of identifiers may take: far more than any mailbox has, and little
// enough to hold.
constexpr std::uint64_t kMostListBytes = 64U * 1024 * 1024;

// Commands whose answers have not come: so few that they never fill a connection.
constexpr std::size_t kMostAhead = 64;

}  // namespace

Task<SessionResult> PopSession::Login(PopSettings settings) {
  co_return co_await OnAccount(std::move(settings), []() -> Task<> { co_return; });
}

Task<SessionResult> PopSession::Headers(PopSettings settings, HeaderRequest request,
                                        HeaderSink& sink) {
  co_return co_await OnAccount(std::move(settings), [&] { return ReadHeaders(request, sink); });
}

Task<SessionResult> PopSession::Message(PopSettings settings, MessageKey key, MessageSink& sink,
                                        std::string* identifier) {
  co_return co_await OnAccount(std::move(settings),
                               [&] { return ReadMessage(key, sink, identifier); });
}

Task<SessionResult> PopSession::Delete(PopSettings settings, MessageKey key) {
  co_return co_await OnAccount(std::move(settings), [&] { return MarkDeleted(key); });
}

Task<SessionResult> PopSession::Logout() {
  lastError_.clear();
  auto result = co_await Part([this] { return Quit(); });
  const bool lost = !std::exchange(deleted_, {}).empty();
  if (lost && result.number == internet_error::kSuccess)
    result.number = internet_error::kQuitFailed;
  co_return result;
}

Task<SessionResult> PopSession::OnAccount(PopSettings settings, Dialogue dialogue) {
  lastError_.clear();
  const bool isOther = settings.loginName != loginName_ || settings.password != password_;
  if (!deleted_.empty() && (isOther || !IsWith(settings))) {
    auto left = co_await Logout();
    if (left.number != internet_error::kSuccess) co_return left;
  }
  if (isOther) TakeLeave();
  loginName_ = settings.loginName;
  password_ = settings.password;
  co_return co_await Converse(std::move(settings), std::move(dialogue));
}

void PopSession::BeforeConnecting() {
  if (!std::exchange(deleted_, {}).empty()) throw SessionFailure{internet_error::kQuitFailed};
}

// RFC 1939, 4 and 7.
Task<> PopSession::LogIn() {
  KeepSecret(password_);
  capabilities_ = {};
  refusesIdentifiers_ = false;
  const auto reply = co_await Reply();
  if (!reply.positive) {
    LogHeard("The server port is not a POP server.  Here is the server response:", reply.words);
    Refused(internet_error::kNotPop, reply, Connection::TakesLeave);
  }
  const auto& security = Settings().security;
  if (security.AsksForMore() || !security.login.wanted.empty() || security.HasToken()) {
    co_await ExtendedLogIn(reply.words);
  } else {
    co_await SayPassword();
  }
  Status("Connected to server...");
  ++session_;
  LoggedIn();
}

Task<> PopSession::SayPassword() {
  auto reply = co_await Command("USER " + loginName_);
  if (reply.positive) {
    Say("PASS " + password_, "PASS ****");
    reply = co_await Reply();
    if (reply.positive) {
      TheReport().OnLogin("USER");
      co_return;
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
    last = co_await Statistics();
    sink.OnBegin();
    if (last == deleted_.size()) {
      Status("Mailbox is empty.");
      co_return;
    }
    number = 1;
  }
  if (request.fetched != nullptr) {
    co_await FindFetched(request, last);
    if (request.fetched->Contains(number)) sink.OnBegin();
  }
  if (request.kind == HeaderRequest::Kind::All && capabilities_.pipelining) {
    co_await ReadHeadersAhead(static_cast<std::uint32_t>(last), request, sink);
    Status("Headers loaded successfully.");
    co_return;
  }
  bool goesOn = true;
  for (number = AfterUnwanted(number, request); goesOn && number <= last;
       number = AfterUnwanted(number + 1, request)) {
    co_await ReadHeader(number, sink);
    Progress(number, last, number);
    goesOn = sink.OnHeaderEnd(number);
  }
  sink.OnNextRequested();
  Status("Headers loaded successfully.");
}

// What was deleted in this session is no longer counted by the server, and keeps its number.
Task<std::uint32_t> PopSession::Statistics() {
  const auto reply = co_await Command("STAT");
  if (!reply.positive) Refused(internet_error::kStatisticsFailed, reply, Connection::Stays);
  std::string_view words = reply.words;
  const auto count = TakeNumber(words);
  if (!count) Refused(internet_error::kInvalidPopReply, reply, Connection::TakesLeave);
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max() - 1;
  co_return static_cast<std::uint32_t>(std::min(*count + deleted_.size(), kMost));
}

std::uint32_t PopSession::AfterDeleted(std::uint32_t number) const {
  while (deleted_.contains(number)) ++number;
  return number;
}

std::uint32_t PopSession::AfterUnwanted(std::uint32_t number, const HeaderRequest& request) const {
  number = AfterDeleted(number);
  while (request.fetched != nullptr && request.fetched->Contains(number)) {
    number = AfterDeleted(number + 1);
  }
  return number;
}

Task<> PopSession::ReadHeader(std::uint32_t number, HeaderSink& sink) {
  Say("TOP " + std::to_string(number) + " 0");
  sink.OnNextRequested();
  const auto reply = co_await Reply();
  if (!reply.positive) Refused(internet_error::kTopFailed, reply, Connection::Stays);
  sink.OnBegin();
  co_await ReadHeaderLines(number, sink);
}

Task<> PopSession::ReadHeaderLines(std::uint32_t number, HeaderSink& sink) {
  bool inHeader = true;
  co_await ReadList([&](const Heard& line) {
    if (line.starts && line.text.empty()) inHeader = false;
    if (inHeader) sink.OnHeaderLine(number, line.text, line.completes);
  });
}

// A refusal is told when everything has been answered, so that the session stays as it is.
Task<> PopSession::ReadHeadersAhead(std::uint32_t last, HeaderRequest request, HeaderSink& sink) {
  std::deque<std::uint32_t> asked;
  std::optional<SessionFailure> refusal;
  bool goesOn = true;
  auto next = AfterUnwanted(1, request);
  for (;;) {
    if (goesOn && asked.size() <= kMostAhead / 2) {
      std::vector<std::string> commands;
      for (; next <= last && request.most > 0 && asked.size() < kMostAhead;
           next = AfterUnwanted(next + 1, request)) {
        commands.push_back("TOP " + std::to_string(next) + " 0");
        asked.push_back(next);
        --request.most;
      }
      if (!commands.empty()) SayAll(commands);
    }
    if (asked.empty()) break;
    const auto number = asked.front();
    asked.pop_front();
    TheReport().OnCommand("TOP");
    AwaitReply();
    const auto reply = co_await Reply();
    if (!reply.positive) {
      if (!refusal) {
        lastError_ = ServerWords(WithoutSecrets(reply.words));
        refusal.emplace(internet_error::kTopFailed, Connection::Stays, lastError_,
                        Report().Detail(internet_error::kTopFailed));
      }
      goesOn = false;
      continue;
    }
    if (!goesOn) {
      co_await ReadList([](const Heard&) {});
      continue;
    }
    sink.OnBegin();
    co_await ReadHeaderLines(number, sink);
    Progress(number, last, number);
    goesOn = sink.OnHeaderEnd(number);
    sink.OnNextRequested();
  }
  if (refusal) throw SessionFailure(*refusal);
}

Task<> PopSession::ReadIdentifiers(HeaderSink& sink) {
  Status("Loading message identifiers...");
  const auto reply = co_await Command("UIDL");
  if (!reply.positive) Refused(internet_error::kIdentifiersFailed, reply, Connection::Stays);
  sink.OnBegin();
  co_await ReadIdentifierList([&](std::uint32_t number, std::string_view identifier) {
    sink.OnIdentifier(number, identifier);
  });
  Status("Identifiers loaded successfully.");
}

// A refusal means that there are no identifiers, and nothing was fetched.
Task<> PopSession::FindFetched(HeaderRequest request, std::uint64_t messages) {
  auto& fetched = *request.fetched;
  fetched.OnBegin();
  if (request.kind == HeaderRequest::Kind::Single) {
    const auto identifier = co_await IdentifierOf(request.number);
    fetched.OnIdentifier(request.number, identifier);
    fetched.OnEnd(false);
    co_return;
  }
  if (refusesIdentifiers_) co_return;
  const auto reply = co_await Command("UIDL");
  refusesIdentifiers_ = !reply.positive;
  if (!reply.positive) co_return;
  std::uint64_t listed = 0;
  co_await ReadIdentifierList([&](std::uint32_t number, std::string_view identifier) {
    ++listed;
    fetched.OnIdentifier(number, identifier);
  });
  fetched.OnEnd(deleted_.empty() && listed == messages);
}

Task<std::string> PopSession::IdentifierOf(std::uint32_t number) {
  if (refusesIdentifiers_ || deleted_.contains(number)) co_return std::string();
  const auto reply = co_await Command("UIDL " + std::to_string(number));
  refusesIdentifiers_ = !reply.positive;
  std::string_view identifier = reply.words;
  if (!reply.positive || TakeNumber(identifier) != number) co_return std::string();
  co_return std::string(identifier);
}

// RFC 1939, 7. Lines that are none are left out.
Task<> PopSession::ReadIdentifierList(std::function<void(std::uint32_t, std::string_view)> take) {
  co_await ReadList([&](const Heard& line) {
    if (!line.starts) return;
    auto identifier = line.text;
    const auto number = TakeNumber(identifier).value_or(0);
    if (number == 0 || number > std::numeric_limits<std::uint32_t>::max()) return;
    take(static_cast<std::uint32_t>(number), identifier);
  });
}

Task<> PopSession::ReadList(std::function<void(const Heard&)> take) {
  AwaitData();
  std::uint64_t bytes = 0;
  for (;;) {
    auto& line = co_await NextData();
    if (!IsContent(line)) co_return;
    bytes += line.text.size() + 2;
    if (bytes > kMostListBytes) throw SessionFailure{internet_error::kOverflow};
    take(line);
  }
}

Task<> PopSession::ReadMessage(MessageKey key, MessageSink& sink, std::string* identifier) {
  const auto number = co_await NumberOf(std::move(key));
  if (identifier != nullptr) *identifier = co_await IdentifierOf(number);
  Status("Loading message...");
  const auto reply = co_await Command("RETR " + std::to_string(number));
  if (!reply.positive) Refused(internet_error::kRetrieveFailed, reply, Connection::Stays);
  std::string_view words = reply.words;
  const auto size = TakeNumber(words).value_or(0);  // 0: the server does not tell
  Status("Receiving message...");
  AwaitData();
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

Task<> PopSession::MarkDeleted(MessageKey key) {
  const auto number = co_await NumberOf(std::move(key));
  Status("Deleting message...");
  const auto reply = co_await Command("DELE " + std::to_string(number));
  if (!reply.positive) Refused(internet_error::kDeleteFailed, reply, Connection::Stays);
  deleted_.insert(number);
  Status("Message deleted successfully.");
}

// Another session may have other numbers: what was before it may be gone.
Task<std::uint32_t> PopSession::NumberOf(MessageKey key) {
  if (key.session == session_) co_return key.number;
  std::uint32_t number = 0;
  if (!key.uniqueId.empty()) number = co_await NumberByIdentifier(key.number, key.uniqueId);
  if (number == 0 && key.identity != 0) {
    number = co_await NumberByHeader(key.number, key.identity);
  }
  if (number == 0) throw SessionFailure{error_code::kNoHeaders, Connection::Stays};
  co_return number;
}

Task<std::uint32_t> PopSession::NumberByIdentifier(std::uint32_t likely, std::string uniqueId) {
  const auto one = co_await Command("UIDL " + std::to_string(likely));
  if (one.positive) {
    std::string_view identifier = one.words;
    if (TakeNumber(identifier) == likely && identifier == uniqueId) co_return likely;
  }
  const auto all = co_await Command("UIDL");
  if (!all.positive) co_return 0;
  std::uint32_t found = 0;
  co_await ReadIdentifierList([&](std::uint32_t number, std::string_view identifier) {
    if (identifier == uniqueId) found = number;
  });
  co_return found;
}

// What was deleted elsewhere has moved the message to the front; nothing moves it to the back.
Task<std::uint32_t> PopSession::NumberByHeader(std::uint32_t likely, std::uint64_t identity) {
  if (co_await HasHeader(likely, identity)) co_return likely;
  const auto last = co_await Statistics();
  for (auto number = std::min(likely - 1, last); number > 0; --number) {
    if (co_await HasHeader(number, identity)) co_return number;
  }
  co_return 0;
}

Task<bool> PopSession::HasHeader(std::uint32_t number, std::uint64_t identity) {
  if (deleted_.contains(number)) co_return false;
  HeaderCollector header({1, false, "NATIVE"});
  try {
    co_await ReadHeader(number, header);
  } catch (const SessionFailure& failure) {
    if (failure.number != internet_error::kTopFailed) throw;
    lastError_.clear();
    co_return false;
  }
  header.OnHeaderEnd(number);
  co_return header.Table().front().identity == identity;
}

Task<> PopSession::Quit() {
  try {
    const auto reply = co_await Command("QUIT");
    if (!reply.positive) Refused(internet_error::kQuitFailed, reply, Connection::IsClosed);
    deleted_.clear();
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
  LogHeard("", heard.text);
  StopWaiting();
  NoteReply({std::string(heard.text)});
  co_return PopReply(heard.text);
}

// RFC 1939, 3. A message may hold bare line feeds, between which a dot is just a dot: if it ended
// the message, the rest of that would be taken for the server's words.
bool PopSession::IsContent(Heard& line) {
  LogHeard("", line.text);
  if (!line.starts) return true;
  if (line.completes && line.text == ".") return !Socket().IsBetweenCrLfs();
  if (line.text.starts_with('.')) line.text.remove_prefix(1);
  return true;
}

void PopSession::Refused(std::int32_t number, const PopReply& reply, Connection connection) {
  lastError_ = ServerWords(WithoutSecrets(reply.words));
  throw SessionFailure{number, connection, lastError_};
}

}  // namespace quillon
