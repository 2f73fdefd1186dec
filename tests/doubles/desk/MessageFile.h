// A message as a directory: message.txt, a file for each attachment, and rich.txt for rich text.
#pragma once

#include <filesystem>
#include <optional>

#include "desk/Store.h"

namespace desk {

// Without id and folder, which the directory's place tells.
std::optional<Message> ReadMessage(const std::filesystem::path& directory);

// Writes the message into a directory, which may hold an older state of it.
void WriteMessage(const std::filesystem::path& directory, const Message& message);

}  // namespace desk
