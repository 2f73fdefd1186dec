// MAPIRTF.DLL: its one function takes ANSI texts.
#pragma once

#include "platform/win32/ForeignLibrary.h"
#include "ports/CodePage.h"
#include "ports/RichTextLibrary.h"

namespace quillon {

class Win32RichTextLibrary final : public RichTextLibrary {
 public:
  explicit Win32RichTextLibrary(const CodePage& codePage) : codePage_(codePage) {}

  std::int32_t Write(const std::string& profile, const std::string& messageId,
                     const std::string& storeId, const std::string& text) override;

 private:
  const CodePage& codePage_;
  ForeignLibrary library_{L"mapirtf.dll"};
};

}  // namespace quillon
