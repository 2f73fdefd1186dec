// A file that goes with a message.
#pragma once

#include <string>

namespace quillon {

// The file as the client gave it (or as it was written on receiving), and the name to show.
struct Attachment {
  std::string file;
  std::string displayName;
};

}  // namespace quillon
