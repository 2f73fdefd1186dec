#include "backends/mapi/MapiMailSystem.h"

#include "backends/mapi/MapiErrorText.h"
#include "backends/mapi/MapiKind.h"
#include "ports/Workstation.h"

namespace quillon {

namespace {

constexpr const char* kLibrary = "mapi32.dll";

}  // namespace

MapiMailSystem::MapiMailSystem(Workstation& workstation, FileSystem& files, BackEnd* backEnd)
    : MailSystem(MailFamily::SimpleMapi, backEnd), workstation_(workstation), files_(files) {}

bool MapiMailSystem::IsPresent() {
  return workstation_.LibraryLoads(kLibrary, {});
}

std::string MapiMailSystem::Library() const {
  return kLibrary;
}

int MapiMailSystem::Kind() {
  return FindMapiKind(files_, workstation_);
}

std::string MapiMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return MapiErrorText(number);
}

}  // namespace quillon
