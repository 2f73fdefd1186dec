#include "platform/win32/ProviderLibrary.h"

#include <array>

#include "platform/win32/FaultGuard.h"
#include "platform/win32/LibrarySearch.h"
#include "platform/win32/WideText.h"

namespace quillon {

namespace {

constexpr DWORD kOutOfHand = 0xE0515543;  // an exception of an application, as any other

bool Run(void (*function)(void*), void* context) {
  return RunGuarded(function, context);
}

void Abandon() {
  RaiseException(kOutOfHand, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

// What is named in part leads to wherever this process happens to be.
std::wstring PathOf(const std::wstring& name) {
  const bool hasDirectory = name.find_first_of(L"\\/:") != std::wstring::npos;
  return hasDirectory && !IsFullPath(name) ? std::wstring() : FindLibrary(name);
}

// As compilers name a function of this kind, with a .def file and without.
FARPROC FunctionOf(HMODULE module) {
  constexpr std::array kNames = {"QuillonProviderGetTable", "QuillonProviderGetTable@4",
                                 "_QuillonProviderGetTable@4"};
  for (const auto* const name : kNames) {
    if (const FARPROC found = GetProcAddress(module, name)) return found;
  }
  return nullptr;
}

}  // namespace

ProviderLibrary::ProviderLibrary() : ProviderTable({&Run, &Abandon}) {}

std::int32_t ProviderLibrary::Load(const std::string& library) {
  if (ProviderTable::Load(library) == provider::kSuccess) return provider::kSuccess;
  const auto path = PathOf(WideFromUtf8(library));
  if (path.empty()) return provider::kMissing;
  // With the directory of the library itself as the first one for what it needs.
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module == nullptr) return provider::kMissing;
  const FARPROC function = FunctionOf(module);
  const auto result = function == nullptr
                          ? provider::kOtherVersion
                          : Take(reinterpret_cast<decltype(&QuillonProviderGetTable)>(
                                reinterpret_cast<void*>(function)));
  // After a fault something of it may still be at work.
  if (result == provider::kOtherVersion) FreeLibrary(module);
  return result;
}

}  // namespace quillon
