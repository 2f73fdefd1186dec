#include "mail/ReceivedFiles.h"

#include <utility>

namespace quillon {

SplitSettings SplitSettingsOf(const MailRequest& request, FileSystem& files) {
  const auto& instance = request.instance;
  const auto& switches = request.shared.switches;
  SplitSettings settings;
  settings.directory = instance.attachmentDirectory;
  if (settings.directory.empty()) settings.directory = switches.temporaryDirectory;
  if (settings.directory.empty()) settings.directory = files.TempDirectory();
  settings.suppressAttachments = instance.suppressAttachments != kFalse;
  settings.suppressAlternatives = request.shared.internet.suppressAlternatives != kFalse;
  settings.returnShortPaths = instance.returnShortFilespecs != kFalse;
  settings.headersInBody = instance.headersInMessage != kFalse;
  settings.htmlAsText = instance.wantsHtml;
  settings.maximumBodyLines = static_cast<std::size_t>(switches.maximumBodyLines);
  return settings;
}

ReceivedFiles::ReceivedFiles(FileSystem& files, const MailRequest& request)
    : files_(files), settings_(SplitSettingsOf(request, files)), list_(files) {}

std::string ReceivedFiles::NewFile(const std::string& name) {
  std::string path;
  const auto file = list_.NewFile(settings_, name, path);
  return file != nullptr && file->Close() ? path : std::string();
}

bool ReceivedFiles::Copy(const std::string& source, const std::string& name) {
  const auto path = NewFile(name);
  return !path.empty() && files_.CopyWholeFile(source, path);
}

}  // namespace quillon
