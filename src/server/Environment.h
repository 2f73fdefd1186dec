// What a Server instance works with: the state shared by all instances and the ports of the process, each owned by the
// program entry, which builds one Environment (a test builds as many as it likes).
#pragma once

#include <string>

#include "mail/SharedState.h"

namespace quillon {

class FileSystem;
class MessageBoxPort;
class MailSystems;
class ProtocolLog;
class clsINIUtilities;

struct ProductInfo {
  std::string version;         // the version text, as in "1.0"
  std::string directory;       // of the executable, without a trailing backslash
  std::string defaultProfile;  // the default Active Messaging profile of the workstation
};

struct Environment {
  SharedState& shared;
  FileSystem& files;
  MessageBoxPort& messageBox;
  MailSystems& mailSystems;
  clsINIUtilities& configuration;
  ProtocolLog& protocolLog;
  ProductInfo product;
};

}  // namespace quillon
