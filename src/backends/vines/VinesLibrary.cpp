#include "backends/vines/VinesLibrary.h"

#include "backends/vines/VinesErrorText.h"

namespace quillon {

std::string VinesLibrary::Name() {
  return configuration_.ReadString("VINES", "Provider");
}

std::int32_t VinesLibrary::Load() {
  const auto name = Name();
  return name.empty() ? provider::kMissing : provider_.Load(name);
}

std::string VinesLibrary::TextOf(std::int32_t number) {
  auto text = VinesErrorText(number);
  if (text.empty() && Load() == provider::kSuccess) text = provider_.ErrorText(number);
  return text;
}

}  // namespace quillon
