#include "server/ConfigurationFile.h"

#include "core/WholeFile.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

constexpr const char* kFileName = "quillon.ini";

bool IsWritable(FileSystem& files, const std::string& path) {
  const bool existed = files.FileExists(path);
  const bool opened = files.Open(path, OpenMode::kAppend) != nullptr;
  if (opened && !existed) files.RemoveFile(path);
  return opened;
}

// What somebody else could have put there decides nothing, nor does what is written there tell it
// to others.
bool IsClosedToOthers(FileSystem& files, const std::string& directory, const std::string& path) {
  return !files.OthersCanWrite(directory) &&
         !(files.FileExists(path) && files.OthersCanWrite(path));
}

}  // namespace

std::string ConfigurationPath(FileSystem& files, const std::string& programDirectory,
                              const std::string& userDirectory) {
  auto path = WithSeparator(files, programDirectory) + kFileName;
  if (userDirectory.empty() ||
      (IsClosedToOthers(files, programDirectory, path) && IsWritable(files, path))) {
    return path;
  }
  const auto own = WithSeparator(files, userDirectory) + "Quillon";
  files.MakeDirectory(own);
  return WithSeparator(files, own) + kFileName;
}

std::string MachineConfigurationPath(FileSystem& files, const std::string& programDirectory) {
  auto path = WithSeparator(files, programDirectory) + kFileName;
  if (!IsClosedToOthers(files, programDirectory, path)) path.clear();
  return path;
}

}  // namespace quillon
