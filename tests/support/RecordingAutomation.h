// Automation objects that a test makes up. What is asked of them is recorded in order, with the
// arguments, and any of it can be made to fail.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/AutomationValues.h"
#include "core/Text.h"
#include "ports/AutomationObject.h"

namespace quillon::testing {

inline constexpr auto kUnknownName = static_cast<std::int32_t>(0x80020006U);  // DISP_E_UNKNOWNNAME
inline constexpr auto kBadIndex = static_cast<std::int32_t>(0x8002000BU);     // DISP_E_BADINDEX

struct CaseLess {
  bool operator()(const std::string& left, const std::string& right) const {
    return UpperAscii(left) < UpperAscii(right);
  }
};

// A value as the record shows it: texts in quotes, objects by nothing but that they are there.
inline std::string Shown(const AutomationValue& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return "'" + *text + "'";
  if (const auto* const date = std::get_if<AutomationDate>(&value)) {
    return "day " + std::to_string(date->days);
  }
  if (const auto* const object = std::get_if<AutomationObjectPtr>(&value)) {
    return *object != nullptr ? "object" : "Nothing";
  }
  if (const auto* const list = std::get_if<std::vector<AutomationValue>>(&value)) {
    std::string text;
    for (const auto& element : *list) text += (text.empty() ? "[" : ", ") + Shown(element);
    return text + "]";
  }
  return TextOf(value);
}

// What all objects of a test share.
struct AutomationRecord {
  std::vector<std::string> lines;
  // Members that fail, as "Message.Send", whenever they are used.
  std::map<std::string, std::int32_t, CaseLess> failing;
  // Or the n-th use of any, from 1 on.
  std::size_t failAt = 0;
  std::int32_t failure = 0;

  void Note(const std::string& member, std::string line) {
    lines.push_back(std::move(line));
    if (lines.size() == failAt) throw AutomationError(failure, "as told");
    const auto found = failing.find(member);
    if (found != failing.end()) throw AutomationError(found->second, "as told");
  }
  std::size_t Count(const std::string& line) const {
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
  }
};

class RecordingObject : public AutomationObject {
 public:
  using Method = std::function<AutomationValue(const AutomationArguments&)>;

  RecordingObject(AutomationRecord& record, std::string name)
      : record_(record), name_(std::move(name)) {}

  AutomationValue Get(std::string_view member, const AutomationArguments& arguments) override {
    return Use("get ", std::string(member), arguments);
  }
  AutomationValue Call(std::string_view member, const AutomationArguments& arguments) override {
    return Use("call ", std::string(member), arguments);
  }
  void Put(std::string_view member, const AutomationValue& value) override {
    const auto full = name_ + "." + std::string(member);
    record_.Note(full, "put " + full + " " + Shown(value));
    properties[std::string(member)] = value;
  }

  AutomationRecord& Record() noexcept { return record_; }
  std::string Text(const std::string& property) { return TextOf(properties[property]); }

  std::map<std::string, AutomationValue, CaseLess> properties;
  std::map<std::string, Method, CaseLess> methods;

 private:
  AutomationValue Use(const char* kind, const std::string& member,
                      const AutomationArguments& arguments) {
    const auto full = name_ + "." + member;
    std::string line = kind + full;
    for (const auto& argument : arguments) {
      line += " " + (argument.name.empty() ? "" : argument.name + "=") + Shown(argument.value);
    }
    record_.Note(full, std::move(line));
    if (const auto method = methods.find(member); method != methods.end()) {
      return method->second(arguments);
    }
    const auto property = properties.find(member);
    if (property == properties.end()) throw AutomationError(kUnknownName, full);
    return property->second;
  }

  AutomationRecord& record_;
  std::string name_;
};

using RecordingObjectPtr = std::shared_ptr<RecordingObject>;

// A collection that is walked by "Item" or by "GetFirst" and "GetNext".
class RecordingCollection final : public RecordingObject {
 public:
  RecordingCollection(AutomationRecord& record, const std::string& name)
      : RecordingObject(record, name) {
    methods["Count"] = [this](const auto&) -> AutomationValue {
      return claimed.value_or(static_cast<std::int32_t>(items.size()));
    };
    methods["Item"] = [this](const AutomationArguments& arguments) -> AutomationValue {
      const auto index = NumberOf(arguments.at(0).value);
      if (index < 1 || static_cast<std::size_t>(index) > items.size()) {
        throw AutomationError(kBadIndex, "Item");
      }
      return AutomationObjectPtr(items[static_cast<std::size_t>(index) - 1]);
    };
    methods["GetFirst"] = [this](const auto&) { return Step(0); };
    methods["GetNext"] = [this](const auto&) { return Step(next_); };
    methods["Add"] = [this](const AutomationArguments& arguments) -> AutomationValue {
      auto made = make(arguments);
      if (made != nullptr) items.push_back(made);
      return AutomationObjectPtr(made);
    };
  }

  void Remove(const RecordingObject* item) {
    std::erase_if(items, [item](const auto& held) { return held.get() == item; });
  }

  std::vector<RecordingObjectPtr> items;
  std::function<RecordingObjectPtr(const AutomationArguments&)> make;  // for "Add"; null: refused
  std::optional<std::int32_t> claimed;  // a Count that need not be true
  bool endless = false;                 // the last item comes again and again
  std::function<bool(RecordingObject&)> shows = [](auto&) { return true; };

 private:
  AutomationValue Step(std::size_t from) {
    for (next_ = from; next_ < items.size(); ++next_) {
      if (shows(*items[next_])) return AutomationObjectPtr(items[next_++]);
    }
    if (endless && !items.empty()) return AutomationObjectPtr(items.back());
    return AutomationObjectPtr();
  }

  std::size_t next_ = 0;
};

// Makes one object for each name of a class that it knows.
class RecordingObjects final : public AutomationObjects {
 public:
  AutomationObjectPtr Create(const std::string& progId) override {
    created.push_back(progId);
    const auto found = classes.find(progId);
    if (found == classes.end()) throw AutomationError(-2147221005, "no such class");
    return found->second;
  }

  std::map<std::string, AutomationObjectPtr> classes;
  std::vector<std::string> created;
};

}  // namespace quillon::testing
