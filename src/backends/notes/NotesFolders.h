// The folders and views of a mail database, by their paths: the names of a folder and those around
// it, with the client's delimiter between them. An empty path, or "INBOX" in any case, is the
// inbox. A view is named like a folder, and shows documents that are not in it.
//
// Every member throws AutomationError.
#pragma once

#include <string>
#include <vector>

#include "ports/AutomationObject.h"

namespace quillon {

class NotesFolders {
 public:
  NotesFolders(AutomationObjectPtr database, std::string delimiter);

  // Null for what does not exist.
  AutomationObjectPtr Find(const std::string& path) const;
  // What exists: a folder or a view, or a folder only.
  AutomationObjectPtr FindAny(const std::string& path) const;
  AutomationObjectPtr FindFolder(const std::string& path) const;

  // Whether there is a folder, and no view, that the client knows by this name.
  bool HasFolder(const std::string& name) const;

  // Any folder but the inbox.
  void Delete(const std::string& path) const;

  // The folders in a folder, or, for the empty path and the delimiter alone, in none: their names,
  // or their paths; with `all` also those in them, each behind the one that it is in.
  std::vector<std::string> List(const std::string& parent, bool paths, bool all) const;

 private:
  std::vector<std::string> NamesOf(const std::string& path) const;
  std::string ViewNameOf(const std::string& path) const;
  AutomationObjectPtr View(const std::string& name) const;

  AutomationObjectPtr database_;
  std::string delimiter_;
};

}  // namespace quillon
