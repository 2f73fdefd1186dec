#include "platform/win32/ForeignLibrary.h"

#include "platform/win32/LibrarySearch.h"

namespace quillon {

FARPROC ForeignLibrary::Address(const char* function) {
  if (module_ == nullptr) {
    const auto path = FindLibrary(name_);
    if (path.empty()) return nullptr;
    module_ = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module_ == nullptr) return nullptr;
  }
  return GetProcAddress(module_, function);
}

}  // namespace quillon
