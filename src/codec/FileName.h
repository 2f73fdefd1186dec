// The names under which received attachments are written: harmless whatever the sender chose, and
// never the name of a file that is already there.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillon {

class File;
class FileSystem;

// Base name and extension, cut at the FIRST "." and each at 255 characters, reduced to the letters
// A to Z in either case, the digits, blank and _^$~!#%&-{}()@'`; "TEMPFILE" and "TMP" stand for
// what is empty then. So "my.file.txt" becomes "my.filetxt" and "readme" becomes "readme.TMP".
// Beyond that, blanks at the end go, and a base name that Windows takes for a device (CON, NUL,
// COM1, ...) is extended by "_".
std::string CleanFileName(std::string_view name);

// The new file of an attachment, created so that nobody else can have taken the name.
struct AttachmentFile {
  std::string path;            // long form
  std::string listedPath;      // what the attachment list shows: the short (8.3) form on request
  std::unique_ptr<File> file;  // open for writing; null when the directory takes no file
};

// Creates a file for an attachment of this name. When the name is taken, the end of its base name
// is written over with a digit from 1 to 9, and from then on with three capital letters drawn by
// `randomLetters` (six when ten thousand draws found all names taken). A
// name that is longer than the system takes is cut to 50 and 10 characters.
AttachmentFile CreateAttachmentFile(FileSystem& files, const std::string& directory,
                                    std::string_view name, bool returnShort,
                                    const std::function<std::string()>& randomLetters);

// The path alone, of a name that was free at the time of the call.
std::string UniqueAttachmentPath(FileSystem& files, const std::string& directory,
                                 std::string_view name, bool returnShort);

// Three letters from a generator that is seeded anew.
std::string RandomLetters();

}  // namespace quillon
