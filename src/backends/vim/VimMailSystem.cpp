#include "backends/vim/VimMailSystem.h"

#include "backends/vim/VimErrorText.h"
#include "backends/vim/VimLocation.h"

namespace quillon {

VimMailSystem::VimMailSystem(Workstation& workstation, BackEnd* backEnd)
    : MailSystem(MailFamily::Vim, backEnd), workstation_(workstation) {}

bool VimMailSystem::IsPresent() {
  return LocateVim(workstation_).found;
}

std::string VimMailSystem::Library() const {
  return kVimLibrary;
}

std::string VimMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return VimErrorText(number);
}

}  // namespace quillon
