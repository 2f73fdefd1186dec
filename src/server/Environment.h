// What a Server instance works with: the state shared by all instances and the ports of the
// process, each owned by the program entry, which builds one Environment (a test builds as many as
// it likes).
#pragma once

#include <string>

#include "mail/SharedState.h"

namespace quillon {

class AsynchNotifier;
class BusyGate;
class CodePage;
class FileSystem;
class MailDialog;
class MailSystemDialog;
class MessageBoxPort;
class MailSystems;
class ProtocolLog;
class Workstation;
class clsINIUtilities;

struct ProductInfo {
  std::string version;      // the version text, as in "1.0"
  std::string fileVersion;  // as in "1.0.0.0"
  std::string directory;    // of the executable, without a trailing backslash
};

struct Environment {
  SharedState& shared;
  FileSystem& files;
  CodePage& codePage;
  Workstation& workstation;
  MessageBoxPort& messageBox;
  MailDialog& mailDialog;
  MailSystemDialog& mailSystemDialog;
  MailSystems& mailSystems;
  clsINIUtilities& configuration;
  ProtocolLog& protocolLog;
  AsynchNotifier& notifier;
  BusyGate& busy;
  ProductInfo product;
};

}  // namespace quillon
