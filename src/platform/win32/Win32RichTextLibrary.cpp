#include "platform/win32/Win32RichTextLibrary.h"

namespace quillon {

std::int32_t Win32RichTextLibrary::Write(const std::string& profile, const std::string& messageId,
                                         const std::string& storeId, const std::string& text) {
  using WriteType = int(WINAPI*)(const char*, const char*, const char*, const char*);
  constexpr int kNotWritten = -1;
  const auto profileBytes = codePage_.ToBytes(profile);
  const auto textBytes = codePage_.ToBytes(text);
  return library_.Call("writertf", WriteType{}, kNotWritten, kNotWritten, profileBytes.c_str(),
                       messageId.c_str(), storeId.c_str(), textBytes.c_str());
}

}  // namespace quillon
