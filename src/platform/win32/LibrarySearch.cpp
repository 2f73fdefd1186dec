#include "platform/win32/LibrarySearch.h"

#include <windows.h>
#include <utility>

namespace quillon {

namespace {

// A directory's text, given by a function of the system that is told how much room there is.
template <class Call>
std::wstring TextFrom(Call&& call) {
  std::wstring text(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(text.data(), static_cast<DWORD>(text.size()));
    const bool fits = length < text.size();
    text.resize(length);
    if (fits) return text;
  }
}

std::wstring ProgramDirectory() {
  const auto path = TextFrom([](wchar_t* text, DWORD size) {
    const DWORD length = GetModuleFileNameW(nullptr, text, size);
    return length < size ? length : size * 2;  // it says no more than that it was cut off
  });
  return path.substr(0, path.find_last_of(L'\\'));
}

std::wstring SystemDirectory() {
  return TextFrom(GetSystemDirectoryW);
}

// As SearchPathW takes them.
std::wstring SearchedDirectories() {
  auto list = ProgramDirectory() + L';' + SystemDirectory();
  const auto path = TextFrom(
      [](wchar_t* text, DWORD size) { return GetEnvironmentVariableW(L"PATH", text, size); });
  for (std::wstring_view rest = path; !rest.empty();) {
    const auto end = rest.find(L';');
    const auto directory = rest.substr(0, end);
    if (IsFullPath(directory)) list.append(L";").append(directory);
    rest.remove_prefix(end == std::wstring_view::npos ? rest.size() : end + 1);
  }
  return list;
}

std::wstring FindIn(const std::wstring& directories, const std::wstring& name) {
  return TextFrom([&](wchar_t* text, DWORD size) {
    return SearchPathW(directories.c_str(), name.c_str(), nullptr, size, text, nullptr);
  });
}

}  // namespace

bool IsFullPath(std::wstring_view path) {
  if (path.starts_with(L"\\\\")) return true;
  return path.size() >= 3 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
}

void SearchLibrariesSafely() {
  // It takes the place of the current directory. An empty text would take that out as well, on
  // Windows, but not in Wine.
  SetDllDirectoryW(SystemDirectory().c_str());
  SetSearchPathMode(BASE_SEARCH_PATH_ENABLE_SAFE_SEARCHMODE | BASE_SEARCH_PATH_PERMANENT);
}

std::wstring FindLibrary(const std::wstring& name) {
  return FindIn(SearchedDirectories(), name);
}

LibraryDirectory::LibraryDirectory(const std::wstring& directory) {
  if (!IsFullPath(directory)) return;
  auto previous =
      TextFrom([](wchar_t* text, DWORD size) { return GetCurrentDirectoryW(size, text); });
  if (SetCurrentDirectoryW(directory.c_str()) == FALSE) return;
  SetDllDirectoryW(directory.c_str());
  directory_ = directory;
  previous_ = std::move(previous);
}

LibraryDirectory::~LibraryDirectory() {
  if (directory_.empty()) return;
  SearchLibrariesSafely();
  SetCurrentDirectoryW(previous_.c_str());
}

std::wstring LibraryDirectory::Find(const std::wstring& name) const {
  return directory_.empty() ? std::wstring() : FindIn(directory_, name);
}

}  // namespace quillon
