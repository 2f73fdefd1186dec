// An automation object of another program, whose members are found by name when they are called.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quillon {

class AutomationObject;
using AutomationObjectPtr = std::shared_ptr<AutomationObject>;

// A date as automation has it: days since 30 December 1899, the time as fraction; local time.
struct AutomationDate {
  double days = 0;
  bool operator==(const AutomationDate&) const = default;
};

// Left out, as an optional argument.
struct AutomationMissing {
  bool operator==(const AutomationMissing&) const = default;
};

// Nothing at all, one value, or a list. An object may be null ("Nothing"). Texts are UTF-8.
struct AutomationValue
    : std::variant<std::monostate, AutomationMissing, bool, std::int32_t, double, AutomationDate,
                   std::string, AutomationObjectPtr, std::vector<AutomationValue>> {
  using variant::variant;
  // Else it would be a bool.
  // NOLINTNEXTLINE(google-explicit-constructor): a text is a value, as with the other kinds.
  AutomationValue(const char* text) : variant(std::string(text)) {}
};

// One argument of a call, by position or by name. Those by name follow the others.
struct AutomationArgument {
  // NOLINTNEXTLINE(google-explicit-constructor): a value by itself is an argument by position.
  AutomationArgument(AutomationValue argument) : value(std::move(argument)) {}
  AutomationArgument(std::string argumentName, AutomationValue argument)
      : name(std::move(argumentName)), value(std::move(argument)) {}

  std::string name;
  AutomationValue value;
};
using AutomationArguments = std::vector<AutomationArgument>;

// What a call of an object failed with: the number that the object gave (an HRESULT, or the one of
// its error record), and its words.
class AutomationError : public std::runtime_error {
 public:
  AutomationError(std::int32_t number, const std::string& text)
      : std::runtime_error(text), number_(number) {}

  std::int32_t Number() const noexcept { return number_; }

 private:
  std::int32_t number_;
};

// Every member throws AutomationError.
class AutomationObject {
 public:
  AutomationObject() = default;
  virtual ~AutomationObject() = default;
  AutomationObject(const AutomationObject&) = delete;
  AutomationObject& operator=(const AutomationObject&) = delete;

  virtual AutomationValue Get(std::string_view member, const AutomationArguments& arguments) = 0;
  virtual void Put(std::string_view member, const AutomationValue& value) = 0;
  virtual AutomationValue Call(std::string_view member, const AutomationArguments& arguments) = 0;

  AutomationValue Get(std::string_view member) { return Get(member, {}); }
  AutomationValue Call(std::string_view member) { return Call(member, {}); }
};

// Makes objects by the name of their class; throws AutomationError when there is no such class or
// it gives no object.
class AutomationObjects {
 public:
  virtual ~AutomationObjects() = default;
  virtual AutomationObjectPtr Create(const std::string& progId) = 0;
};

}  // namespace quillon
