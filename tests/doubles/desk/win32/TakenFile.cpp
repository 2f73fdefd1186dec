#include "desk/win32/TakenFile.h"

#include <windows.h>
#include <atomic>

#include "desk/win32/TheStore.h"

namespace desk {

std::shared_ptr<TakenFile> TakenFile::Of(const std::string& path) {
  static std::atomic<unsigned> number{0};
  const std::string name =
      "taken-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number);
  auto taken = std::make_shared<TakenFile>(TheStore().Where() / "making" / name);
  std::error_code failure;
  if (!std::filesystem::copy_file(PathFromUtf8(path), taken->Path(), failure)) return nullptr;
  return taken;
}

TakenFile::~TakenFile() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

}  // namespace desk
