#include "platform/win32/ForeignLibrary.h"

namespace quillon {

bool ForeignLibrary::Open(const std::wstring& path) {
  if (module_ == nullptr && !path.empty()) {
    module_ = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  }
  return module_ != nullptr;
}

bool ForeignLibrary::Load() {
  return module_ != nullptr || Open(FindLibrary(name_));
}

bool ForeignLibrary::LoadFrom(const LibraryDirectory& place) {
  return module_ != nullptr || Open(place.Find(name_));
}

void ForeignLibrary::Unload() {
  if (module_ != nullptr) FreeLibrary(std::exchange(module_, nullptr));
}

FARPROC ForeignLibrary::Address(const char* function) {
  return Load() ? GetProcAddress(module_, function) : nullptr;
}

}  // namespace quillon
