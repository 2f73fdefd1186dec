// The names of files and directories of MHS.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// Eight letters and digits that nobody can foresee.
std::string RandomMhsName();

// Whether a parcel can have this name: one file of the parcel directory, with eight characters and
// an extension of three at most, and no device of Windows.
bool IsParcelName(std::string_view name);

// Whether a user or an application can have a directory of this name.
bool IsDirectoryName(std::string_view name);

// Whether a file of this name may be a message: files that are being written and our own may not.
bool IsMessageName(std::string_view name);

inline constexpr const char* kUnfinished = ".TMP";    // what is being written ends so
inline constexpr const char* kOwnFiles = "QUILLON.";  // our own beside messages begin so

}  // namespace quillon
