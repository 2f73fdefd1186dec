// Loads the provider library, and contains the faults of its calls. It stays loaded, because it may
// hold sessions; one that does not fit is freed.
#pragma once

#include <windows.h>
#include <string>

#include "platform/ProviderTable.h"

namespace quillon {

class ProviderLibrary final : public ProviderTable {
 public:
  ProviderLibrary();

  std::int32_t Load(const std::string& library) override;
};

}  // namespace quillon
