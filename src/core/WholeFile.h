// What every system's files and paths have in common.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ports/FileSystem.h"

namespace quillon {

// No value when the file cannot be opened or read to its end.
std::optional<std::vector<uint8_t>> ReadWholeFile(FileSystem& files, const std::string& path);

// Creates or replaces the file; a failed write leaves none.
bool WriteWholeFile(FileSystem& files, const std::string& path, std::span<const uint8_t> bytes);

// The directory with a separator at its end (the empty path, which means the current directory,
// stays empty).
std::string WithSeparator(const FileSystem& files, std::string directory);

// What follows the last '/', '\\' or drive ':' of a path.
std::string_view FileNameOf(std::string_view path);

}  // namespace quillon
