// NOTES.INI, the settings of a Notes client: where it is, and which mail database it names.
#pragma once

#include <string>
#include <vector>

#include "ports/FileSystem.h"
#include "ports/Workstation.h"

namespace quillon {

struct NotesMailFile {
  std::string server;  // empty: this machine
  std::string file;
};

// Looked for where the registry says that the client is, then along the path, then in the Windows
// directory. Empty when there is none.
std::string FindNotesIni(FileSystem& files, Workstation& workstation);

// The mail database that the file names, as it may have to be opened: a local one also with the
// data directory before it. Empty when it names none.
std::vector<NotesMailFile> MailFilesOf(FileSystem& files, const std::string& notesIni);

}  // namespace quillon
