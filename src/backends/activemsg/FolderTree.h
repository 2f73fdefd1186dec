// The folders of a session, by their paths. A path begins with the name of a store; otherwise it
// leads on from the root folder of the store that holds the inbox, or, when it begins with "INBOX"
// (in any case), from the session's inbox. Names are compared without regard to case.
//
// Every member throws AutomationError, and StepFailure for a path that is none.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ports/AutomationObject.h"

namespace quillon {

// A folder and its names, from that of its store on.
struct FolderPlace {
  AutomationObjectPtr folder;  // null when there is none
  std::vector<std::string> names;
};

class FolderTree {
 public:
  FolderTree(AutomationObjectPtr session, std::string delimiter);

  AutomationObjectPtr Inbox() const;

  // Null for a folder that does not exist. The path has at least one name.
  AutomationObjectPtr Find(const std::string& path) const;

  // Makes the last folder of the path; the others exist.
  AutomationObjectPtr Create(const std::string& path) const;

  // Puts a copy of a folder into another one; null when the library does not hand it out.
  AutomationObjectPtr Copy(const std::string& from, const std::string& to, bool subfolders) const;

  void Delete(const std::string& path) const;

  // The folders in a folder: their names, or their paths from the store on; with `all` also those
  // in them, each behind the one that it is in. The empty path is the root folder of the store that
  // holds the inbox, the delimiter alone what is above all stores: they are listed themselves.
  std::vector<std::string> List(const std::string& parent, bool paths, bool all) const;

 private:
  using Names = std::vector<std::string>;

  Names NamesOf(const std::string& path) const;
  FolderPlace DefaultRoot() const;
  FolderPlace StoreRoot(const std::string& name) const;
  FolderPlace Locate(const Names& names) const;

  AutomationObjectPtr session_;
  std::string delimiter_;
};

}  // namespace quillon
