#include "backends/notes/NotesValues.h"

#include <algorithm>
#include <array>
#include <variant>

#include "backends/notes/NotesNumber.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

std::string PlainText(const AutomationValue& value) {
  const bool hasText = std::holds_alternative<std::string>(value) ||
                       std::holds_alternative<std::int32_t>(value) ||
                       std::holds_alternative<double>(value);
  return hasText ? TextOf(value) : std::string();
}

bool IsComponentTag(std::string_view tag) {
  constexpr std::array<std::string_view, 8> kTags{"CN", "OU", "O", "C", "OU1", "OU2", "OU3", "OU4"};
  return std::any_of(kTags.begin(), kTags.end(),
                     [tag](const auto known) { return EqualsIgnoreCase(tag, known); });
}

}  // namespace

AutomationObjectPtr RequireNotesObject(const AutomationValue& value, const char* missing) {
  auto object = ObjectOf(value);
  if (object == nullptr) throw AutomationError(notes::kFailure, missing);
  return object;
}

std::vector<AutomationValue> ElementsOf(const AutomationValue& value) {
  if (const auto* const list = std::get_if<std::vector<AutomationValue>>(&value)) return *list;
  if (std::holds_alternative<std::monostate>(value)) return {};
  return {value};
}

AutomationValue ItemValue(AutomationObject& document, const char* item) {
  auto values = ElementsOf(document.Call("GetItemValue", Arguments({item})));
  return values.empty() ? AutomationValue() : std::move(values.front());
}

std::string ItemText(AutomationObject& document, const char* item) {
  return PlainText(ItemValue(document, item));
}

std::vector<std::string> ItemTexts(AutomationObject& document, const char* item) {
  const auto values = ElementsOf(document.Call("GetItemValue", Arguments({item})));
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (const auto& value : values) {
    auto text = PlainText(value);
    if (!text.empty()) texts.push_back(std::move(text));
  }
  return texts;
}

void PutItem(AutomationObject& document, const char* item, const AutomationValue& value) {
  document.Call("ReplaceItemValue", Arguments({item, value}));
}

AutomationValue MessageDate(AutomationObject& document) {
  for (const auto* const item : {"PostedDate", "DeliveredDate"}) {
    auto date = ItemValue(document, item);
    if (std::holds_alternative<AutomationDate>(date) || !PlainText(date).empty()) return date;
  }
  return document.Get("Created");
}

std::optional<bool> IsRead(AutomationObject& document) {
  try {
    return TruthOf(document.Call("GetRead"));
  } catch (const AutomationError& error) {
    if (!IsUnknownMember(error)) throw;
    return std::nullopt;
  }
}

void MarkRead(AutomationObject& document) {
  try {
    document.Call("MarkRead");
  } catch (const AutomationError& error) {
    if (!IsUnknownMember(error)) throw;
    // An older client marks what is saved.
    document.Call("Save", Arguments({true, false, true}));
  }
}

bool IsDeleted(AutomationObject& document) {
  try {
    return !TruthOf(document.Get("IsValid"));
  } catch (const AutomationError& error) {
    if (!IsUnknownMember(error)) throw;
    return false;
  }
}

std::string PlainName(std::string_view name) {
  constexpr std::string_view kCommonName = "CN=";
  if (!EqualsIgnoreCase(name.substr(0, kCommonName.size()), kCommonName)) return std::string(name);
  auto components = Split(name, "/");
  for (auto& component : components) {
    const auto mark = component.find('=');
    if (mark != std::string::npos && IsComponentTag(std::string_view(component).substr(0, mark))) {
      component.erase(0, mark + 1);
    }
  }
  return Join(components, "/");
}

}  // namespace quillon
