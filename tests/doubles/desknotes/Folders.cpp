#include "desknotes/Folders.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/Text.h"
#include "desknotes/DocumentState.h"
#include "desknotes/NotesObject.h"

namespace desk {
namespace {

struct Known {
  const char* folder;
  const char* name;
  bool isFolder;
};
constexpr std::array kKnown{Known{kInbox, "($Inbox)", true}, Known{kSentItems, "($Sent)", false},
                            Known{kDeletedItems, "($Trash)", false},
                            Known{kOutbox, "($Drafts)", false}};

void AddFolders(const Folder& parent, const std::string& path, std::vector<ViewFacts>& views) {
  for (const Folder& folder : TheStore().Subfolders(parent)) {
    const auto* known = std::ranges::find(kKnown, folder.name, &Known::folder);
    const bool ofOurs = path.empty() && known != kKnown.end();
    const std::string name = path.empty() ? folder.name : path + "\\" + folder.name;
    views.push_back({ofOurs ? known->name : name, folder, !ofOurs || known->isFolder});
    AddFolders(folder, name, views);
  }
}

// Every document of the mail file, wherever it is.
void AddAll(const Folder& folder, std::vector<std::string>& ids) {
  for (std::string& id : TheStore().MessageIds(folder)) ids.push_back(std::move(id));
  for (const Folder& below : TheStore().Subfolders(folder)) AddAll(below, ids);
}

}  // namespace

std::vector<ViewFacts> ViewsOf(const std::string& mailbox) {
  std::vector<ViewFacts> views{{"($All)", std::nullopt, false}};
  AddFolders(TheStore().Root(mailbox), "", views);
  return views;
}

std::optional<ViewFacts> FindView(const std::string& mailbox, const std::string& name) {
  for (ViewFacts& view : ViewsOf(mailbox)) {
    const bool hidden = view.name.starts_with("(");
    if (quillon::EqualsIgnoreCase(view.name, name) ||
        (hidden && quillon::EqualsIgnoreCase(view.name.substr(1, view.name.size() - 2), name))) {
      return std::move(view);
    }
  }
  return std::nullopt;
}

Folder NamedFolder(const std::string& mailbox, const std::string& name, bool make) {
  const std::optional<ViewFacts> view = FindView(mailbox, name);
  if (view && view->isFolder) return *view->folder;
  if (view || !make || name.empty()) throw Failed("Folder is not known: " + name);
  Folder folder = TheStore().Root(mailbox);
  for (const std::string& part : quillon::Split(name, "\\")) {
    const std::optional<Folder> below = TheStore().Subfolder(folder, part);
    folder = below ? *below : TheStore().AddFolder(folder, part);
  }
  return folder;
}

std::vector<std::string> DocumentsIn(const std::string& mailbox, const ViewFacts& view) {
  std::vector<std::string> ids;
  AddAll(TheStore().Root(mailbox), ids);
  std::ranges::sort(ids);
  if (view.folder) {
    std::erase_if(ids, [&](const std::string& id) {
      const std::optional<Message> message = TheStore().Read(mailbox, id);
      return !message || !IsIn(*message, *view.folder);
    });
  }
  return ids;
}

}  // namespace desk
