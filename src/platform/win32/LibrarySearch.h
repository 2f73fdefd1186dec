// Where libraries are looked for. A client decides in which directory this process starts, so the
// current directory is never one of the places: what lies there is not known to anybody.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// For the whole process, and for what libraries that are loaded later load themselves. The path
// variable stays in use: mail programs find their parts by it.
void SearchLibrariesSafely();

// Neither relative to a directory nor to a drive.
bool IsFullPath(std::wstring_view path);

// The full path of the library of that name, from the program's directory, the system's, or one
// that the path variable names in full; empty when there is none.
std::wstring FindLibrary(const std::wstring& name);

// Lets libraries be found in a directory, which is the current one too, for the life of the object.
// Some libraries want that of the mail program they belong to. The directory has to be a full path;
// anything else changes nothing.
class LibraryDirectory {
 public:
  explicit LibraryDirectory(const std::wstring& directory);
  LibraryDirectory(const LibraryDirectory&) = delete;
  LibraryDirectory& operator=(const LibraryDirectory&) = delete;
  ~LibraryDirectory();

  // Of a library in it; empty when there is none.
  std::wstring Find(const std::wstring& name) const;

 private:
  std::wstring directory_;
  std::wstring previous_;
};

}  // namespace quillon
