// Web forms: the value of a field never grows beyond its text, holds no plus sign, and is trimmed.
#include "codec/WebForm.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "MemoryFiles.h"
#include "core/Text.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  static const auto kCodePage = quillon::MakeAnsiCodePage();
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  quillon::WebFormFields fields;
  quillon::ParseWebForm(text, *kCodePage, fields);
  for (const auto& [name, value] : fields) {
    Require(value.find('+') == std::string::npos);
    Require(quillon::Trim(value) == value);
    Require(quillon::UpperAscii(quillon::Trim(name)) == name);
    Require(value.size() <= text.size());
  }
  return 0;
}
