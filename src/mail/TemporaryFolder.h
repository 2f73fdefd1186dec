// A directory of its own for the files that one message needs while it is sent, removed with all of
// them when this object goes. A file in it, open as long as the object lives, tells that it is in
// use; a directory whose file can be had was left behind by a process that died.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/FileSystem.h"

namespace quillon {

class TemporaryFolder {
 public:
  // `parent` empty: the system's directory for temporary files. With `keep` everything stays.
  // Nothing is made before the first file is asked for.
  TemporaryFolder(FileSystem& files, std::string parent, bool keep);
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // The path for one more file, which the caller makes; empty when there can be no directory.
  std::string NewFile(std::string_view extension);

  // The same for a file that must have this name, in a directory of its own.
  std::string NewNamedFile(std::string_view name);

 private:
  bool Make();
  std::string NextPath(std::string_view extension);

  FileSystem& files_;
  std::string parent_;
  bool keep_;
  std::string path_;  // with a separator; empty until it is made
  std::unique_ptr<File> inUse_;
  std::vector<std::string> paths_;
  std::vector<std::string> directories_;  // of named files
  int made_ = 0;
};

// Removes the directories below `parent` that were left behind, with those of their files that such
// a directory has. One that is kept, or of which it is not sure whose it is, stays.
void RemoveAbandonedFolders(FileSystem& files, const std::string& parent);

}  // namespace quillon
