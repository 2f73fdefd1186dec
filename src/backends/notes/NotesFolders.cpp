#include "backends/notes/NotesFolders.h"

#include <algorithm>
#include <utility>

#include "backends/FolderPath.h"
#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kInbox = "INBOX";
constexpr const char* kInboxView = "($Inbox)";
constexpr const char* kNotesDelimiter = "\\";

[[noreturn]] void BadFolder(const std::string& words) {
  throw AutomationError(notes::kBadFolderName, words);
}

bool IsFolder(AutomationObject& view) {
  return TruthOf(view.Get("IsFolder"));
}

// As clients know the folder; none for what the client program hides from its user.
std::vector<std::string> ShownNames(AutomationObject& folder) {
  const auto name = TextOf(folder.Get("Name"));
  if (EqualsIgnoreCase(name, kInboxView)) return {std::string(kInbox)};
  if (name.starts_with("(")) return {};
  return Split(name, kNotesDelimiter);
}

bool StandsBefore(const std::vector<std::string>& one, const std::vector<std::string>& other) {
  return std::lexicographical_compare(
      one.begin(), one.end(), other.begin(), other.end(),
      [](const auto& left, const auto& right) { return UpperAscii(left) < UpperAscii(right); });
}

bool BeginsWith(const std::vector<std::string>& names, const std::vector<std::string>& parent) {
  return names.size() > parent.size() && std::equal(parent.begin(), parent.end(), names.begin(),
                                                    [](const auto& one, const auto& other) {
                                                      return EqualsIgnoreCase(one, other);
                                                    });
}

}  // namespace

NotesFolders::NotesFolders(AutomationObjectPtr database, std::string delimiter)
    : database_(std::move(database)), delimiter_(std::move(delimiter)) {}

std::vector<std::string> NotesFolders::NamesOf(const std::string& path) const {
  auto names = SplitFolderPath(path, delimiter_);
  if (!names) BadFolder("Bad folder name: " + path);
  return std::move(*names);
}

std::string NotesFolders::ViewNameOf(const std::string& path) const {
  const auto names = NamesOf(path);
  if (names.empty() && !path.empty()) BadFolder("Bad folder name: " + path);
  if (names.empty() || (names.size() == 1 && EqualsIgnoreCase(names.front(), kInbox))) {
    return kInboxView;
  }
  return Join(names, kNotesDelimiter);
}

AutomationObjectPtr NotesFolders::View(const std::string& name) const {
  return ObjectOf(database_->Call("GetView", Arguments({name})));
}

AutomationObjectPtr NotesFolders::Find(const std::string& path) const {
  return View(ViewNameOf(path));
}

bool NotesFolders::HasFolder(const std::string& name) const {
  const auto view = View(name);
  return view != nullptr && IsFolder(*view);
}

AutomationObjectPtr NotesFolders::FindAny(const std::string& path) const {
  auto view = Find(path);
  if (view == nullptr) BadFolder("There is no such folder: " + path);
  return view;
}

AutomationObjectPtr NotesFolders::FindFolder(const std::string& path) const {
  auto folder = FindAny(path);
  if (!IsFolder(*folder)) BadFolder("This is a view and no folder: " + path);
  return folder;
}

void NotesFolders::Delete(const std::string& path) const {
  if (ViewNameOf(path) == kInboxView) BadFolder("The inbox cannot be deleted.");
  FindFolder(path)->Call("Remove");
}

std::vector<std::string> NotesFolders::List(const std::string& parent, bool paths, bool all) const {
  const auto parentNames = NamesOf(parent);
  if (!parentNames.empty()) FindFolder(parent);
  std::vector<std::vector<std::string>> found;
  for (const auto& element : ElementsOf(database_->Get("Views"))) {
    const auto view = ObjectOf(element);
    if (view == nullptr || !IsFolder(*view)) continue;
    auto names = ShownNames(*view);
    if (!BeginsWith(names, parentNames)) continue;
    if (all || names.size() == parentNames.size() + 1) found.push_back(std::move(names));
  }
  // The client has them in no order that its user knows.
  std::sort(found.begin(), found.end(), StandsBefore);
  std::vector<std::string> list;
  list.reserve(found.size());
  for (const auto& names : found) list.push_back(paths ? Join(names, delimiter_) : names.back());
  return list;
}

}  // namespace quillon
