#include "backends/activemsg/FolderTree.h"

#include <utility>

#include "backends/FolderPath.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/StepFailure.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kInbox = "INBOX";
constexpr const char* kBadName = "Bad folder name.";
// More than anybody has; a tree that leads into itself ends there.
constexpr std::int32_t kMostFolders = 65536;
constexpr std::size_t kDeepest = 100;

std::string NameOf(AutomationObject& object) {
  return TextOf(object.Get("Name"));
}

AutomationObjectPtr FoldersOf(AutomationObject& folder) {
  return RequireObject(folder.Get("Folders"));
}

AutomationObjectPtr ChildOf(AutomationObject& folder, const std::string& name) {
  const auto folders = FoldersOf(folder);
  AutomationObjectPtr child;
  ForEachInTurn(*folders, kMostFolders, [&](const AutomationObjectPtr& candidate) {
    if (!EqualsIgnoreCase(NameOf(*candidate), name)) return true;
    child = candidate;
    return false;
  });
  return child;
}

// Collects the folders below a folder.
class Listing {
 public:
  Listing(std::string delimiter, bool paths, bool all)
      : delimiter_(std::move(delimiter)), paths_(paths), all_(all) {}

  void Add(const FolderPlace& parent) {
    const auto folders = FoldersOf(*parent.folder);
    ForEachInTurn(*folders, kMostFolders, [&](const AutomationObjectPtr& folder) {
      return AddFolder(parent.names, folder);
    });
  }

  // False when the list is full.
  bool AddFolder(std::vector<std::string> names, const AutomationObjectPtr& folder) {
    if (list_.size() >= static_cast<std::size_t>(kMostFolders)) return false;
    names.push_back(NameOf(*folder));
    list_.push_back(paths_ ? Join(names, delimiter_) : names.back());
    if (all_ && names.size() < kDeepest) Add({folder, std::move(names)});
    return true;
  }

  // A store, whose folders are those of its root folder.
  void AddStore(AutomationObject& store) {
    const auto name = NameOf(store);
    list_.push_back(name);
    if (all_) Add({RequireObject(store.Get("RootFolder")), {name}});
  }

  std::vector<std::string> Take() { return std::move(list_); }

 private:
  std::string delimiter_;
  bool paths_;
  bool all_;
  std::vector<std::string> list_;
};

}  // namespace

FolderTree::FolderTree(AutomationObjectPtr session, std::string delimiter)
    : session_(std::move(session)), delimiter_(std::move(delimiter)) {}

AutomationObjectPtr FolderTree::Inbox() const {
  return RequireObject(session_->Get("inbox"));
}

FolderTree::Names FolderTree::NamesOf(const std::string& path) const {
  auto names = SplitFolderPath(path, delimiter_);
  if (!names) throw StepFailure(kBadName, active_messaging::kBadFolderName);
  return std::move(*names);
}

FolderPlace FolderTree::DefaultRoot() const {
  const auto storeId = Inbox()->Get("StoreID");
  const auto store = RequireObject(session_->Call("GetInfoStore", Arguments({storeId})));
  return {RequireObject(store->Get("RootFolder")), {NameOf(*store)}};
}

FolderPlace FolderTree::StoreRoot(const std::string& name) const {
  FolderPlace place;
  const auto stores = RequireObject(session_->Get("InfoStores"));
  ForEachItem(*stores, [&](const AutomationObjectPtr& store) {
    const auto storeName = NameOf(*store);
    if (!EqualsIgnoreCase(storeName, name)) return true;
    place = {RequireObject(store->Get("RootFolder")), {storeName}};
    return false;
  });
  return place;
}

FolderPlace FolderTree::Locate(const Names& names) const {
  auto place = StoreRoot(names.front());
  std::size_t next = place.folder != nullptr ? 1 : 0;
  if (place.folder == nullptr) {
    place = DefaultRoot();
    if (EqualsIgnoreCase(names.front(), kInbox)) {
      place.folder = Inbox();
      place.names.push_back(NameOf(*place.folder));
      next = 1;
    }
  }
  for (; next < names.size() && place.folder != nullptr; ++next) {
    place.folder = ChildOf(*place.folder, names[next]);
    place.names.push_back(names[next]);
  }
  return place;
}

AutomationObjectPtr FolderTree::Find(const std::string& path) const {
  const auto names = NamesOf(path);
  if (names.empty()) throw StepFailure(kBadName, active_messaging::kBadFolderName);
  return Locate(names).folder;
}

AutomationObjectPtr FolderTree::Create(const std::string& path) const {
  auto names = NamesOf(path);
  if (names.empty()) throw StepFailure(kBadName, active_messaging::kBadFolderName);
  const auto existing = Locate(names).folder;
  if (existing != nullptr) {
    throw AutomationError(active_messaging::kCollision, "There is such a folder.");
  }
  const auto name = std::move(names.back());
  names.pop_back();
  const auto parent = names.empty() ? DefaultRoot().folder : Locate(names).folder;
  if (parent == nullptr) throw AutomationError(active_messaging::kNoFolder, "No parent folder.");
  auto folder = RequireObject(FoldersOf(*parent)->Call("Add", Arguments({name})));
  try {
    folder->Call("Update");
  } catch (const AutomationError&) {
    try {
      folder->Call("Delete");
    } catch (const AutomationError&) {
      // It had not come to be then.
    }
    throw;
  }
  return folder;
}

AutomationObjectPtr FolderTree::Copy(const std::string& from, const std::string& to,
                                     bool subfolders) const {
  const auto source = Find(from);
  if (source == nullptr) throw AutomationError(active_messaging::kNoFolder, "No such folder.");
  const auto destination = Find(to);
  if (destination == nullptr) throw StepFailure(kBadName, active_messaging::kBadFolderName);
  return ObjectOf(
      source->Call("CopyTo", Arguments({destination->Get("ID"), destination->Get("StoreID"),
                                        AutomationMissing(), subfolders})));
}

void FolderTree::Delete(const std::string& path) const {
  const auto names = NamesOf(path);
  // Neither a store nor the session's inbox, which are no folders that somebody has made.
  const bool isGiven =
      names.empty() || (names.size() == 1 && (EqualsIgnoreCase(names.front(), kInbox) ||
                                              StoreRoot(names.front()).folder != nullptr));
  if (isGiven) throw StepFailure(kBadName, active_messaging::kBadFolderName);
  const auto folder = Locate(names).folder;
  if (folder == nullptr) throw AutomationError(active_messaging::kNoFolder, "No such folder.");
  folder->Call("Delete");
}

std::vector<std::string> FolderTree::List(const std::string& parent, bool paths, bool all) const {
  const auto names = NamesOf(parent);
  Listing listing(delimiter_, paths, all);
  if (names.empty() && !parent.empty()) {
    const auto stores = RequireObject(session_->Get("InfoStores"));
    ForEachItem(*stores, [&](const AutomationObjectPtr& store) {
      listing.AddStore(*store);
      return true;
    });
    return listing.Take();
  }
  const auto place = names.empty() ? DefaultRoot() : Locate(names);
  if (place.folder == nullptr) throw AutomationError(active_messaging::kNoFolder, "No folder.");
  listing.Add(place);
  return listing.Take();
}

}  // namespace quillon
