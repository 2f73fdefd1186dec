#include "backends/mapi/MapiMailSystem.h"

#include "backends/mapi/MapiErrorText.h"
#include "ports/Workstation.h"

namespace quillon {

namespace {

constexpr const char* kLibrary = "mapi32.dll";

}  // namespace

MapiMailSystem::MapiMailSystem(Workstation& workstation, BackEnd* backEnd)
    : MailSystem(MailFamily::SimpleMapi, backEnd), workstation_(workstation) {}

bool MapiMailSystem::IsPresent() {
  return workstation_.LibraryLoads(kLibrary, {});
}

std::string MapiMailSystem::Library() const {
  return kLibrary;
}

std::string MapiMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return MapiErrorText(number);
}

}  // namespace quillon
