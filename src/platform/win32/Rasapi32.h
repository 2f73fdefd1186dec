// The Remote Access Service through RASAPI32.DLL.
#pragma once

#include "ports/CodePage.h"
#include "ports/Ras.h"

namespace quillon {

class Rasapi32 final : public RasLibrary {
 public:
  // Texts cross in the code page.
  explicit Rasapi32(const CodePage& codePage) : codePage_(codePage) {}

  // Null too when a function is missing in it.
  std::shared_ptr<Ras> Load() override;

 private:
  const CodePage& codePage_;
};

}  // namespace quillon
