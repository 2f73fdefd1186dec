// Simple MAPI, through whatever mapi32.dll is installed.
#pragma once

#include "mail/MailSystem.h"

namespace quillon {

class FileSystem;
class Workstation;

class MapiMailSystem final : public MailSystem {
 public:
  MapiMailSystem(Workstation& workstation, FileSystem& files, BackEnd* backEnd = nullptr);

  bool IsPresent() override;
  bool KeepsHandle() const override { return true; }
  std::string Library() const override;
  int Kind() override;
  std::string ErrorText(MailSystemId system, std::int32_t number) const override;

 private:
  Workstation& workstation_;
  FileSystem& files_;
};

}  // namespace quillon
