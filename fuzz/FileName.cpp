// Names of received files: whatever the sender chose, the result has one dot, harmless characters
// and no device's name, and cleaning it again changes nothing.
#include "codec/FileName.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "core/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::MemoryFiles;
  using quillon::fuzz::Require;
  const std::string_view name(reinterpret_cast<const char*>(data), size);
  const auto clean = quillon::CleanFileName(name);
  const auto dot = clean.find('.');
  Require(dot != std::string::npos && dot > 0 && dot == clean.rfind('.'));
  Require(dot + 1 < clean.size() && clean.back() != ' ');
  Require(clean.find_first_of("/\\:*?\"<>|") == std::string::npos);
  for (const char c : clean) Require(c >= ' ' && c <= '~');
  for (const auto* device : {"CON", "PRN", "AUX", "NUL", "COM1", "LPT9", "CONIN$"}) {
    Require(!quillon::EqualsIgnoreCase(quillon::Trim(clean.substr(0, dot)), device));
  }
  Require(quillon::CleanFileName(clean) == clean);

  MemoryFiles files;
  std::string last = "AA@";
  const auto letters = [&] {
    ++last[2];
    return last;
  };
  for (int i = 0; i < 11; ++i) {
    const auto created = quillon::CreateAttachmentFile(files, "/dir", name, false, letters);
    Require(created.file != nullptr && created.path.rfind('/') == 4);
  }
  Require(files.files.size() == 11);
  return 0;
}
