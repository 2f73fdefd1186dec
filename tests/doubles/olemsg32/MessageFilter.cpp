#include "olemsg32/MessageFilter.h"

#include <algorithm>
#include <vector>

#include "core/Text.h"

namespace desk {
namespace {

using Self = MessageFilterObject;

Variant Shown(const std::optional<bool>& rule) {
  return rule ? FromFlag(*rule) : Variant();
}
Variant Shown(const std::optional<long>& rule) {
  return rule ? FromNumber(*rule) : Variant();
}
Variant Shown(const std::optional<std::string>& rule) {
  return rule ? FromText(*rule) : Variant();
}
Variant Shown(const std::optional<DateText>& rule) {
  std::optional<Variant> date = rule ? FromDateText(rule->text) : std::nullopt;
  return date ? std::move(*date) : Variant();
}

void Take(std::optional<bool>& rule, const VARIANT& value) {
  rule = FlagOf(value);
}
void Take(std::optional<long>& rule, const VARIANT& value) {
  rule = NumberOf(value);
}
void Take(std::optional<std::string>& rule, const VARIANT& value) {
  rule = TextOf(value);
}
void Take(std::optional<DateText>& rule, const VARIANT& value) {
  rule = DateText{DateTextOf(DateOf(value))};
}

template <auto Place>
MemberOf<Self> Rule(std::string_view name, DISPID id) {
  return {name, id, "", [](Self& o, const Arguments&) { return Shown(o.Rules().*Place); },
          [](Self& o, const Arguments&, const VARIANT& value) {
            if (SaysNothing(value)) {
              (o.Rules().*Place).reset();
            } else {
              Take(o.Rules().*Place, value);
            }
          }};
}

bool HasPart(const std::string& text, const std::string& part) {
  return quillon::UpperAscii(text).find(quillon::UpperAscii(part)) != std::string::npos;
}

bool HasRecipient(const Message& message, const std::string& part) {
  return std::ranges::any_of(message.recipients, [&](const Recipient& recipient) {
    return HasPart(recipient.name, part) || HasPart(recipient.address, part);
  });
}

}  // namespace

bool FilterRules::SayNothing() const {
  return !unread && !sent && !type && !sender && !subject && !text && !recipients &&
         !conversation && !timeFirst && !timeLast && !importance;
}

bool FilterRules::Match(const Message& message) const {
  if (SayNothing()) return true;
  std::vector<bool> answers;
  const auto ask = [&](const auto& rule, auto holds) {
    if (rule) answers.push_back(holds(*rule));
  };
  using Text = const std::string&;
  ask(unread, [&](bool wanted) { return message.unread == wanted; });
  ask(sent, [&](bool wanted) { return message.sent == wanted; });
  ask(type, [&](Text t) { return quillon::EqualsIgnoreCase(message.messageClass, t); });
  ask(sender,
      [&](Text t) { return HasPart(message.senderName, t) || HasPart(message.senderAddress, t); });
  ask(subject, [&](Text t) { return HasPart(message.subject, t); });
  ask(text, [&](Text t) { return HasPart(message.text, t); });
  ask(recipients, [&](Text t) { return HasRecipient(message, t); });
  ask(conversation, [&](Text t) { return message.conversationTopic == t; });
  ask(timeFirst, [&](const DateText& date) { return message.date >= date.text; });
  ask(timeLast, [&](const DateText& date) { return message.date <= date.text; });
  ask(importance, [&](long wanted) { return message.importance == wanted; });
  const auto yes = [](bool answer) { return answer; };
  const bool matches =
      any.value_or(false) ? std::ranges::any_of(answers, yes) : std::ranges::all_of(answers, yes);
  return matches != none.value_or(false);
}

std::span<const MemberOf<MessageFilterObject>> MessageFilterObject::Members() {
  static const std::vector<Row> members{
      Rule<&FilterRules::unread>("Unread", 42),
      Rule<&FilterRules::sent>("Sent", 33),
      Rule<&FilterRules::type>("Type", 17),
      Rule<&FilterRules::sender>("Sender", 32),
      Rule<&FilterRules::subject>("Subject", 38),
      Rule<&FilterRules::text>("Text", 39),
      Rule<&FilterRules::recipients>("Recipients", 28),
      Rule<&FilterRules::conversation>("Conversation", 8),
      Rule<&FilterRules::timeFirst>("TimeFirst", 46),
      Rule<&FilterRules::timeLast>("TimeLast", 47),
      Rule<&FilterRules::importance>("Importance", 27),
      Rule<&FilterRules::any>("Or", 62),
      Rule<&FilterRules::none>("Not", 45),
  };
  return members;
}

}  // namespace desk
