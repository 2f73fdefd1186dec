// Views and folders by the names that they have in a mail file: "($Inbox)", "($Sent)", "($Trash)",
// all others by their path, "Projects\2026"; "($All)" has every document.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "desk/Store.h"

namespace desk {

struct ViewFacts {
  std::string name;
  std::optional<Folder> folder;  // none: every document
  bool isFolder = false;         // else it is a view, in which nothing can be put
};

std::vector<ViewFacts> ViewsOf(const std::string& mailbox);
// By its name, or an alias: the name without the parentheses.
std::optional<ViewFacts> FindView(const std::string& mailbox, const std::string& name);

// A folder that documents may be put into; made when it is missing and `make` says so.
Folder NamedFolder(const std::string& mailbox, const std::string& name, bool make);

std::vector<std::string> DocumentsIn(const std::string& mailbox, const ViewFacts& view);

}  // namespace desk
