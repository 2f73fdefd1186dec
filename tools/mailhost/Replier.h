// Sends a session's replies, and makes go wrong what the fault rules say.
//
// A session tells each step it comes to and does it only when it may; it knows nothing else of
// faults.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Connection.h"
#include "FaultRules.h"

namespace mailhost {

class Replier {
 public:
  // `rules` must outlive the replier.
  Replier(Connection& connection, const std::vector<FaultRule>& rules, Protocol protocol)
      : connection_(connection), protocol_(protocol), tracker_(rules, protocol) {}

  // `step` (in capitals) is reached. False when a fault takes its place: nothing is to be done for
  // it.
  bool Enter(std::string_view step);

  // A reply of one line, or of several joined with CR LF; the last CR LF is added here.
  void Reply(std::string text);
  // A POP3 reply of several lines: `body` is whole lines, dots doubled; "." is added here.
  void ReplyLines(std::string head, const std::string& body);
  void ReplyContent(std::string head, std::unique_ptr<ByteSource> body);
  // True when the last reply asks for a line of a login.
  bool AsksForSecret() const { return asksForSecret_; }
  // Begins TLS behind everything that has been said; its step is HANDSHAKE.
  void Secure(std::unique_ptr<TlsSession> tls);
  // Closes the connection when everything is sent.
  void Finish() { connection_.Out().Close(); }

 private:
  // What the rules make of the reply to the current step.
  struct Changes {
    bool multiline = false;
    bool dropMid = false;
    bool dropAfter = false;
    std::optional<std::uint64_t> truncate{};
    Shape shape{};
    const FaultAction* flood = nullptr;
  };

  // False when the action has taken the step's place.
  bool Apply(const FaultAction& action);
  void SendCut(std::string text);
  void Flood();

  Connection& connection_;
  const Protocol protocol_;
  FaultTracker tracker_;
  Changes changes_;
  bool asksForSecret_ = false;
};

}  // namespace mailhost
