// What stands around the lines of a uuencoded file: the "begin " line, the trailer and the header
// of a part.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quillon {

struct UuBegin {
  std::string mode;
  std::string fileName;
  bool base64 = false;  // a "begin-base64 " line: lines of base64 up to "====" follow
};

// Reads a line, given without its line end, as the start of encoded data: "begin ", a mode of three
// or four octal digits, a name that may hold blanks or be missing.
std::optional<UuBegin> ParseUuBegin(std::string_view line);

// The same anywhere in a text. A line of that form is preferred; else what follows the first "begin
// " up to the line end is taken as it stands, its first word as the mode.
std::optional<UuBegin> FindUuBegin(std::string_view text);

// "begin 644 " with the name in lower case, CR LF.
std::string UuBeginLine(std::string_view inputPath);

// The lines behind the data: the first of them is the grave accent, or empty.
std::string_view UuTrailer(bool graveAccent);

// "end" as a line of its own.
bool IsUuEnd(std::string_view line);

// Which part of a split file this is; numbers count from 1.
struct UuSection {
  uint64_t number = 0;
  uint64_t count = 0;
  std::string fileName;
};

// "section 2 of 12 of file report.zip" and its line end; the name as in the "begin " line.
std::string UuSectionLine(uint64_t number, uint64_t count, std::string_view inputPath);

// Reads such a line. Another program's words may stand before "file".
std::optional<UuSection> ParseUuSection(std::string_view line);

// Whether a line can be one of the data: only such a line is taken from a part that has text of
// other kinds around it.
bool LooksLikeUuData(std::string_view line);

// Whether such a line holds all the characters that its length asks for.
bool IsWholeUuLine(std::string_view line);

}  // namespace quillon
