// The operations with folders.
#include "backends/activemsg/ActiveMessagingBackEnd.h"
#include "backends/activemsg/StepFailure.h"

namespace quillon {

FolderTree ActiveMessagingBackEnd::Folders(MailRequest& request) {
  return {LogOn(request), request.instance.folderDelimiter};
}

MailResult ActiveMessagingBackEnd::CreateFolder(MailRequest& request, const std::string& folder) {
  folder_ = nullptr;
  return Run(request, "Error creating folder - " + folder,
             [&] { folder_ = Folders(request).Create(folder); });
}

MailResult ActiveMessagingBackEnd::DeleteFolder(MailRequest& request, const std::string& folder) {
  folder_ = nullptr;
  return Run(request, "Error deleting folder - " + folder,
             [&] { Folders(request).Delete(folder); });
}

MailResult ActiveMessagingBackEnd::CopyFolder(MailRequest& request, const std::string& from,
                                              const std::string& to, bool subfolders) {
  folder_ = nullptr;
  return Run(request, "Error copying folder - " + from,
             [&] { folder_ = Folders(request).Copy(from, to, subfolders); });
}

MailResult ActiveMessagingBackEnd::GetFolderList(MailRequest& request, const std::string& parent,
                                                 bool returnSpecs, bool allCategories,
                                                 std::vector<std::string>& folders) {
  return Run(request, "Error accessing folder list - " + parent, [&] {
    folders.clear();
    folders = Folders(request).List(parent, returnSpecs, allCategories);
  });
}

MailResult ActiveMessagingBackEnd::FolderExists(MailRequest& request, const std::string& folder,
                                                bool& exists) {
  folder_ = nullptr;
  return Run(request, "Error getting folder object - " + folder, [&] {
    exists = false;
    folder_ = Folders(request).Find(folder);
    exists = folder_ != nullptr;
  });
}

}  // namespace quillon
