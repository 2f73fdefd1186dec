// IBM code page 437, the code page of DOS, which texts of MHS are written in. Windows may lack it.
#pragma once

#include <string>
#include <string_view>

#include "ports/CodePage.h"

namespace quillon {

class CodePage437 final : public CodePage {
 public:
  std::string ToText(std::string_view bytes) const override;
  std::string ToBytes(std::string_view text) const override;
};

}  // namespace quillon
