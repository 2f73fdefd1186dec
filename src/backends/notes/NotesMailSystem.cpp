#include "backends/notes/NotesMailSystem.h"

#include "ports/Workstation.h"

namespace quillon {

bool NotesMailSystem::IsPresent() {
  return workstation_.ObjectCreates("Notes.NotesSession");
}

}  // namespace quillon
