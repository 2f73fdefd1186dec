// One file uuencoded over several, and back.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "ports/FileSystem.h"

namespace quillon {

// Encodes a file into `outputDirectory` (with its separator) so that each output has as many lines
// of 63 characters as fit into `maximumSize` bytes; the part header comes on top. False when that
// is not even one, and then or on any other failure no output is left.
bool EncodeUuParts(FileSystem& files, const std::string& inputPath,
                   const std::string& outputDirectory, int32_t maximumSize);

// Joins and decodes parts. With part headers ("section 2 of 12 ...") the order does not matter and
// all must be there; parts of other programs are taken in the order given, and must reach from a
// "begin " line to the end of the data.
bool DecodeUuParts(FileSystem& files, std::span<const std::string> inputPaths,
                   const std::string& outputPath);

}  // namespace quillon
