#include "automation/TypeLibrary.h"

#include "automation/ComCall.h"

namespace quillon {

TypeLibrary::TypeLibrary(const std::wstring& file) {
  ThrowIfFailed(LoadTypeLibEx(file.c_str(), REGKIND_NONE, library_.Put()));
}

ComPtr<ITypeInfo> TypeLibrary::Info(REFGUID guid) const {
  ComPtr<ITypeInfo> info;
  ThrowIfFailed(library_->GetTypeInfoOfGuid(guid, info.Put()));
  return info;
}

std::wstring ProgramPath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) throw HresultError(HRESULT_FROM_WIN32(GetLastError()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

}  // namespace quillon
