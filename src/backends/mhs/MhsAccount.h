// Where mail lies on this workstation, and whose it is.
#pragma once

#include <string>

#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/FileSystem.h"
#include "ports/LoginPrompt.h"
#include "ports/Workstation.h"

namespace quillon {

struct MhsAccount {
  std::string directory;  // the mail directory, with a separator at its end
  std::string user;
  std::string workgroup;  // may be empty
  std::string application;
};

class MhsAccounts {
 public:
  // `configuration`: section "MHS".
  MhsAccounts(FileSystem& files, Workstation& workstation, clsINIUtilities& configuration)
      : files_(files), workstation_(workstation), configuration_(configuration) {}

  // Whether the workstation itself knows a mail directory, and it is there.
  bool IsHere();

  // The account of a client, who is asked for his name when nothing tells it. Throws ServerError
  // 546 when the mail directory does not exist, 544 when directory or name are not known, 522 when
  // he cancels.
  MhsAccount Find(LoginPrompt& prompt, MailRequest& request);

 private:
  std::string Volume();  // as the workstation knows it; may be empty
  std::string MailDirectory(const std::string& volume) const;

  FileSystem& files_;
  Workstation& workstation_;
  clsINIUtilities& configuration_;
};

}  // namespace quillon
