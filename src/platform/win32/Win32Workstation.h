#pragma once

#include "ports/Workstation.h"

namespace quillon {

class Win32Workstation final : public Workstation {
 public:
  SystemVersion System() override;
  bool LibraryLoads(const std::string& name, const std::string& directory) override;
  std::optional<LibraryInfo> DescribeLibrary(const std::string& name) override;
  bool ObjectCreates(const std::string& progId) override;
  std::string WindowsDirectory() override;
  std::string SystemDirectory() override;
  std::string ProfileValue(const std::string& section, const std::string& key) override;
  std::string UserRegistryText(const std::string& key, const std::string& value) override;
  std::string MachineRegistryText(const std::string& key, const std::string& value) override;
  std::string EnvironmentText(const std::string& name) override;
};

}  // namespace quillon
