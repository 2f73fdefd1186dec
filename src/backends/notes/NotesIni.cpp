#include "backends/notes/NotesIni.h"

#include <array>

#include "core/Text.h"
#include "core/WholeFile.h"
#include "mail/INIUtilities.h"

namespace quillon {

namespace {

constexpr const char* kFileName = "notes.ini";
constexpr const char* kSection = "Notes";
constexpr const char* kRegistryKey = "Software\\Lotus\\Notes";

// The releases that keep keys of their own below that, the newest first.
constexpr std::array kReleases{"\\12.0", "\\11.0", "\\10.0", "\\9.0", "\\8.0",
                               "\\7.0",  "\\6.0",  "\\5.0",  "\\4.0", ""};

// The file in a directory; empty when it is not there.
std::string FileIn(FileSystem& files, const std::string& directory) {
  if (directory.empty()) return {};
  auto path = WithSeparator(files, directory) + kFileName;
  return files.FileExists(path) ? path : std::string();
}

std::string FromRegistry(FileSystem& files, Workstation& workstation) {
  for (const auto* const release : kReleases) {
    const auto key = std::string(kRegistryKey) + release;
    auto path = workstation.UserRegistryText(key, "NotesIniPath");
    if (!path.empty() && files.FileExists(path)) return path;
    path = FileIn(files, workstation.MachineRegistryText(key, "Path"));
    if (!path.empty()) return path;
  }
  return {};
}

// The path has semicolons between its directories, of which some may be in quotes.
std::string AlongPath(FileSystem& files, const std::string& path) {
  for (auto directory : Split(path, ";")) {
    std::erase(directory, '"');
    auto found = FileIn(files, TrimmedCopy(directory));
    if (!found.empty()) return found;
  }
  return {};
}

bool IsAbsolute(const std::string& path) {
  return path.starts_with('\\') || path.starts_with('/') || path.find(':') != std::string::npos;
}

}  // namespace

std::string FindNotesIni(FileSystem& files, Workstation& workstation) {
  auto found = FromRegistry(files, workstation);
  if (found.empty()) found = AlongPath(files, workstation.EnvironmentText("PATH"));
  if (found.empty()) found = FileIn(files, workstation.WindowsDirectory());
  return found;
}

std::vector<NotesMailFile> MailFilesOf(FileSystem& files, const std::string& notesIni) {
  if (notesIni.empty()) return {};
  clsINIUtilities settings(files, notesIni);
  const auto server = settings.ReadString(kSection, "MailServer");
  const auto file = settings.ReadString(kSection, "MailFile");
  if (file.empty()) return {};
  std::vector<NotesMailFile> found{{server, file}};
  const auto directory = settings.ReadString(kSection, "Directory");
  if (server.empty() && !directory.empty() && !IsAbsolute(file)) {
    found.push_back({{}, WithSeparator(files, directory) + file});
  }
  return found;
}

}  // namespace quillon
