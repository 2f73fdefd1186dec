#include "backends/notes/NotesAddressBook.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr const char* kUsers = "($Users)";
// More than one name can stand for; a collection that never ends is not walked for ever.
constexpr std::int32_t kMostMatches = 1000;

std::string FirstText(AutomationObject& document, std::initializer_list<const char*> items) {
  for (const auto* const item : items) {
    auto text = ItemText(document, item);
    if (!text.empty()) return text;
  }
  return {};
}

// A book lists an entry once for each of its names, so that one may match more than once.
std::optional<NotesEntry> FindInBook(AutomationObject& book, const std::string& name) {
  const auto users = OpenUsersView(book);
  if (users == nullptr) return std::nullopt;
  const auto matches =
      RequireNotesObject(users->Call("GetAllDocumentsByKey", Arguments({name, true})),
                         "The address book does not answer.");
  std::optional<NotesEntry> found;
  auto document = ObjectOf(matches->Call("GetFirstDocument"));
  for (std::int32_t seen = 0; document != nullptr && seen < kMostMatches; ++seen) {
    auto entry = ReadNotesEntry(*document);
    const bool isNamed = !entry.name.empty();
    if (isNamed && found && !EqualsIgnoreCase(found->name, entry.name)) {
      throw AutomationError(notes::kAmbiguousName,
                            "Several names in the address book match: " + name);
    }
    if (isNamed) found = std::move(entry);
    document = ObjectOf(matches->Call("GetNextDocument", Arguments({document})));
  }
  return found;
}

}  // namespace

NotesEntry ReadNotesEntry(AutomationObject& document) {
  return {PlainName(FirstText(document, {"FullName", "ListName"})),
          FirstText(document, {"InternetAddress", "MailAddress"})};
}

AutomationObjectPtr OpenUsersView(AutomationObject& book) {
  if (!TruthOf(book.Get("IsOpen"))) book.Call("Open", Arguments({"", ""}));
  return ObjectOf(book.Call("GetView", Arguments({kUsers})));
}

NotesEntry FindInAddressBooks(AutomationObject& session, const std::string& name) {
  std::exception_ptr failure;
  for (const auto& book : ElementsOf(session.Get("AddressBooks"))) {
    try {
      const auto object = ObjectOf(book);
      auto found = object != nullptr ? FindInBook(*object, name) : std::nullopt;
      if (found) return *found;
    } catch (const AutomationError& error) {
      if (IsClientGone(error) || error.Number() == notes::kAmbiguousName) throw;
      // A server that cannot be reached; another book may have the name.
      if (failure == nullptr) failure = std::current_exception();
    }
  }
  if (name.find('@') != std::string::npos) return {name, {}};
  if (failure != nullptr) std::rethrow_exception(failure);
  throw AutomationError(notes::kNoSuchName, "No name in the address books matches: " + name);
}

}  // namespace quillon
