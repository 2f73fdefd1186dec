// The POP3 client session (RFC 1939): login, headers, identifiers, one message, deletion, leave.
//
// Results beside those of MailSession: the numbers of the POP error table. A refused command leaves
// the session as it is; the server's own words are kept as LastErrorDescription. A connection that
// is lost is 29, a reply that makes no sense 4 or 6, more data than can be taken 30.
//
// Deletions become final when the session ends with QUIT, and only then (RFC 1939, 6). When it has
// ended otherwise, the next operation fails with 20, once; so does one that would leave the account
// when the server refuses to.
//
// Numbers of messages hold for one session. In a later one a message is looked for by what is known
// of it, and what is not there any more is 532.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "internet/FetchedList.h"
#include "internet/MailSession.h"
#include "internet/PopCapabilities.h"
#include "internet/PopReply.h"

namespace quillon {

struct PopSettings : SessionSettings {
  std::string loginName;
  std::string password;
};

// What is known of a message that a session has listed.
struct MessageKey {
  std::uint32_t number = 0;    // in that session
  std::uint64_t session = 0;   // which one
  std::string uniqueId;        // as UIDL has told, where there is no identity
  std::uint64_t identity = 0;  // HeaderRecord::identity
};

// Takes headers and identifiers as they arrive. Lines have no line end, and their dots are
// unstuffed; a very long one comes in pieces, of which the last is complete. What cannot take more
// throws SessionFailure.
class HeaderSink {
 public:
  virtual ~HeaderSink() = default;
  // The server is about to list what it has. May come more than once.
  virtual void OnBegin() = 0;
  virtual void OnHeaderLine(std::uint32_t number, std::string_view text, bool complete) = 0;
  // The header of this message is whole. False: enough.
  virtual bool OnHeaderEnd(std::uint32_t number) = 0;
  // The command after that header is on its way: what need not be done before it goes on while the
  // server works.
  virtual void OnNextRequested() = 0;
  virtual void OnIdentifier(std::uint32_t number, std::string_view identifier) = 0;
};

// Takes a message as it arrives.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  // A line, without its end and with its dots unstuffed; a very long one comes in pieces, of which
  // the last is complete. A result other than 0 ends the operation with that number.
  virtual std::int32_t OnMessageLine(std::string_view text, bool complete) = 0;
  // Whether that line belongs to an attachment.
  virtual bool InAttachment() const = 0;
  // The message is whole. A result other than 0 is that of the operation.
  virtual std::int32_t OnMessageEnd() = 0;
};

struct HeaderRequest {
  enum class Kind { All, Single, Identifiers };

  Kind kind = Kind::All;
  std::uint32_t number = 1;                                        // of the message, for Single
  std::uint32_t most = std::numeric_limits<std::uint32_t>::max();  // headers are asked for, for All
  // Whose headers are left out, for All and Single; null: identifiers are not asked for.
  FetchedList* fetched = nullptr;
};

class PopSession final : private MailSession {
 public:
  explicit PopSession(const SessionPorts& ports) : MailSession(ports, "POP") {}

  using MailSession::LoginStatus;
  using MailSession::Report;

  Task<SessionResult> Login(PopSettings settings);
  // Sinks must live as long as the operation.
  Task<SessionResult> Headers(PopSettings settings, HeaderRequest request, HeaderSink& sink);
  // `identifier` takes what UIDL tells of the message, the empty text where it does not; null: it
  // is not asked.
  Task<SessionResult> Message(PopSettings settings, MessageKey key, MessageSink& sink,
                              std::string* identifier = nullptr);
  Task<SessionResult> Delete(PopSettings settings, MessageKey key);
  Task<SessionResult> Logout();

  // Counts the sessions: the one that is there, or the last one.
  std::uint64_t Number() const noexcept { return session_; }

  // The server's words in the last refusal of the last operation.
  const std::string& LastErrorDescription() const noexcept { return lastError_; }

 private:
  void BeforeConnecting() override;
  Task<> LogIn() override;
  Task<> SayPassword();
  // With what servers of today ask for (PopLogin.cpp).
  Task<> ExtendedLogIn(std::string greeting);
  Task<> AskCapabilities();
  Task<> Authenticate(std::string timestamp);
  Task<bool> AuthenticateBy(LoginRules rules);
  Task<> Apop(std::string timestamp);
  Task<> ReadHeaders(HeaderRequest request, HeaderSink& sink);
  Task<> ReadHeader(std::uint32_t number, HeaderSink& sink);
  // Asks for headers before those in front have come (RFC 2449, 6.8).
  Task<> ReadHeadersAhead(std::uint32_t last, HeaderRequest request, HeaderSink& sink);
  // What follows a positive answer to TOP.
  Task<> ReadHeaderLines(std::uint32_t number, HeaderSink& sink);
  Task<> ReadIdentifiers(HeaderSink& sink);
  // Which of so many messages were fetched before.
  Task<> FindFetched(HeaderRequest request, std::uint64_t messages);
  // Empty when the server does not tell.
  Task<std::string> IdentifierOf(std::uint32_t number);
  // Each message's number and identifier, behind UIDL.
  Task<> ReadIdentifierList(std::function<void(std::uint32_t, std::string_view)> take);
  // Each line of a header or a list, which may only be so large.
  Task<> ReadList(std::function<void(const Heard&)> take);
  Task<> ReadMessage(MessageKey key, MessageSink& sink, std::string* identifier);
  Task<> MarkDeleted(MessageKey key);
  Task<> Quit();

  Task<SessionResult> OnAccount(PopSettings settings, Dialogue dialogue);
  // The number of a message in this session.
  Task<std::uint32_t> NumberOf(MessageKey key);
  // 0 when there is no such message, or the server does not tell.
  Task<std::uint32_t> NumberByIdentifier(std::uint32_t likely, std::string uniqueId);
  Task<std::uint32_t> NumberByHeader(std::uint32_t likely, std::uint64_t identity);
  Task<bool> HasHeader(std::uint32_t number, std::uint64_t identity);
  // How many messages there are, with those that were deleted in this session.
  Task<std::uint32_t> Statistics();
  Task<PopReply> Command(std::string line);
  Task<PopReply> Reply();
  // Takes from a line of data what the protocol has added to it; false at its end.
  bool IsContent(Heard& line);
  std::uint32_t AfterDeleted(std::uint32_t number) const;
  std::uint32_t AfterUnwanted(std::uint32_t number, const HeaderRequest& request) const;
  // Ends the operation with what the server has refused.
  [[noreturn]] void Refused(std::int32_t number, const PopReply& reply,
                            SessionFailure::Connection connection);

  std::string loginName_;
  std::string password_;
  std::string lastError_;
  PopCapabilities capabilities_;     // empty when the server was not asked
  std::set<std::uint32_t> deleted_;  // in this session, and not final yet
  bool refusesIdentifiers_ = false;  // in this session
  std::uint64_t session_ = 0;
};

}  // namespace quillon
