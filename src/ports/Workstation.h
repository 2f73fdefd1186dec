// What is installed on this workstation: mail libraries, automation objects, and the settings that
// tell where they are.
#pragma once

#include <optional>
#include <string>

namespace quillon {

struct LibraryInfo {
  std::string maker;        // the CompanyName of its version record; may be empty
  std::string fileVersion;  // as in "1.0.2536.0"; may be empty
};

enum class SystemFamily { Windows16, Windows95, WindowsNt };

struct SystemVersion {
  SystemFamily family = SystemFamily::WindowsNt;
  std::string number;  // as in "10.0.19045"
};

class Workstation {
 public:
  virtual ~Workstation() = default;

  virtual SystemVersion System() = 0;

  // Whether the library can be loaded; it is freed again at once. It is looked for beside the
  // program, in the system's directory and along the path, or else in the directory given (in
  // full), which is the current one meanwhile, so that the library's companions are found there.
  // Otherwise the current directory is never looked at.
  virtual bool LibraryLoads(const std::string& name, const std::string& directory) = 0;

  // The version record of a library, looked for in the same way; no value when there is none.
  virtual std::optional<LibraryInfo> DescribeLibrary(const std::string& name) = 0;

  virtual bool ObjectCreates(const std::string& progId) = 0;

  // In full.
  virtual std::string WindowsDirectory() = 0;
  virtual std::string SystemDirectory() = 0;

  // A value of the user's WIN.INI, or the empty text.
  virtual std::string ProfileValue(const std::string& section, const std::string& key) = 0;

  // A text of the current user's registry, or the empty text.
  virtual std::string UserRegistryText(const std::string& key, const std::string& value) = 0;
  // The same of the machine's, as 32-bit programs see it.
  virtual std::string MachineRegistryText(const std::string& key, const std::string& value) = 0;

  // A variable of the process's environment, or the empty text.
  virtual std::string EnvironmentText(const std::string& name) = 0;
};

}  // namespace quillon
