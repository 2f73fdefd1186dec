#include "server/VersionText.h"

#include "core/Value.h"

namespace quillon {

std::string VersionText(int major, int minor) {
  auto text = ToText(Value(static_cast<float>(major) + static_cast<float>(minor) / 100.0F));
  if (text.find('.') == std::string::npos) text += ".0";
  return text;
}

}  // namespace quillon
