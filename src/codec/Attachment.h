// A file that goes with a message.
#pragma once

#include <string>

namespace quillon {

// The file as the client gave it (or as it was written on receiving), and the name to show.
// What a file is said to be.
struct PartLabel {
  std::string contentType = {};  // "image/png", without parameters; empty: not known
  std::string contentId = {};    // what an HTML text refers to it by, without brackets; or empty
};

struct Attachment {
  std::string file;
  std::string displayName;
  PartLabel label = {};
  bool typeIsClients = false;  // the client has said the type itself
  bool isInline = false;       // the client's HTML shows it
};

}  // namespace quillon
