#include "backends/vim/VimBackEnd.h"

#include "backends/RecipientParts.h"
#include "backends/vim/VimErrorText.h"
#include "backends/vim/VimNames.h"
#include "backends/vim/VimOperation.h"

namespace quillon {

namespace {

constexpr const char* kBoxTitle = "VIM Mail Error";

}  // namespace

VimBackEnd::VimBackEnd(const VimPorts& ports)
    : ports_(ports),
      diagnostic_(ports.messageBox, kBoxTitle, VimErrorText),
      sessions_(ports),
      books_(ports.library, sessions_, diagnostic_) {}

MailResult VimBackEnd::Run(const MailRequest& request,
                           const std::function<void()>& operation) const {
  return RunVim(diagnostic_, request, operation);
}

MailResult VimBackEnd::Login(MailRequest& request) {
  return Run(request, [&] { sessions_.Open(request); });
}

MailResult VimBackEnd::Logout(MailRequest& request) {
  return Run(request, [&] { sessions_.Close(request.instance); });
}

MailResult VimBackEnd::ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                                   std::string& resolved) {
  return Run(request, [&] {
    sessions_.OpenOnDemand(request);
    const auto entry = FindVimName(ports_.library, VimSessions::HandleOf(request.instance), name);
    if (!entry) throw VimFailure({}, vim::kNoMatch);
    resolved = withAddress ? FormatRecipient(entry->name, entry->address) : entry->name;
  });
}

MailResult VimBackEnd::SetSessionHandle(MailRequest& request, std::int32_t handle) {
  sessions_.Change(request.instance, handle);
  return {};
}

void VimBackEnd::Shutdown(std::int32_t) {
  sessions_.End();
}

}  // namespace quillon
