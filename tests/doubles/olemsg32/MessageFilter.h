// Which messages of a folder a collection shows.
#pragma once

#include <memory>
#include <optional>

#include "olemsg32/Session.h"

namespace desk {

struct DateText {
  std::string text;
};

// What is not set is not asked for.
struct FilterRules {
  std::optional<bool> unread;
  std::optional<bool> sent;
  std::optional<std::string> type;    // whole, in any case
  std::optional<std::string> sender;  // these as parts, in any case
  std::optional<std::string> subject;
  std::optional<std::string> text;
  std::optional<std::string> recipients;
  std::optional<std::string> conversation;  // the topic, whole
  std::optional<DateText> timeFirst;
  std::optional<DateText> timeLast;
  std::optional<long> importance;
  std::optional<bool> any;   // one of the rules is enough
  std::optional<bool> none;  // the others are wanted

  // Whether all messages are shown.
  bool SayNothing() const;
  bool Match(const Message& message) const;
};

class MessageFilterObject final : public ChildOf<MessageFilterObject> {
 public:
  static constexpr std::string_view kName = "MessageFilter";
  static constexpr long kNumber = 10;
  static constexpr std::string_view kDefault = "Unread";
  static std::span<const MemberOf<MessageFilterObject>> Members();

  // The collection and all its filter objects share the rules.
  MessageFilterObject(Object& parent, std::shared_ptr<FilterRules> rules)
      : ChildOf(parent), rules_(std::move(rules)) {}

  FilterRules& Rules() const noexcept { return *rules_; }

 private:
  std::shared_ptr<FilterRules> rules_;
};

}  // namespace desk
