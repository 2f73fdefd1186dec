// The logins that Windows makes, through its security interface (SSPI).
#pragma once

#include "ports/SystemLogin.h"

namespace quillon {

class SspiLogin final : public SystemLogin {
 public:
  bool Knows(SystemPackage package) const override;
  std::unique_ptr<SystemContext> Begin(SystemPackage package, const std::string& target,
                                       const SystemAccount& account,
                                       const std::string& binding) const override;
};

}  // namespace quillon
