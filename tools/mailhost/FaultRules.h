// What goes wrong, and when: rules that change single steps of an otherwise normal service.
//
// The form of a rule is told in docs/mailhost.md.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Log.h"
#include "Outbox.h"

namespace mailhost {

struct FaultAction {
  enum class Kind {
    // These take the place of the step:
    kReply,
    kDrop,
    kSilent,
    kGarbage,
    kStall,
    // These change how its reply is sent:
    kDelay,
    kSplit,
    kMultiline,
    kDropMid,
    kDropAfter,
    kTruncate,
    kFlood,
  };

  Kind kind{};
  std::string text{};        // of kReply, a line of kFlood
  std::uint64_t number = 0;  // bytes of kGarbage and kTruncate, milliseconds of kDelay, lines
  bool lines = false;        // kGarbage: with line ends
  Shape shape{};             // of kSplit

  bool TakesPlaceOfStep() const { return kind <= Kind::kStall; }
};

struct FaultRule {
  std::optional<Protocol> protocol;         // empty: both
  std::string step;                         // a command in capitals, "GREETING", ..., or "*"
  std::optional<std::uint64_t> occurrence;  // empty: every time
  FaultAction action;
  std::string text;  // as written
};

// Throws std::invalid_argument with the reason.
FaultRule ParseFaultRule(std::string_view line);

// Follows the steps of one connection.
class FaultTracker {
 public:
  // `rules` must outlive the tracker.
  FaultTracker(const std::vector<FaultRule>& rules, Protocol protocol)
      : rules_(rules), protocol_(protocol), counts_(rules.size()) {}

  // The rules that apply now that `step` is reached, in the order they are written.
  std::vector<const FaultRule*> Reach(std::string_view step);

 private:
  const std::vector<FaultRule>& rules_;
  const Protocol protocol_;
  std::vector<std::uint64_t> counts_;  // per rule, how often its step was reached
};

}  // namespace mailhost
