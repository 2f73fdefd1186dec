#include "backends/mapi/MapiKind.h"

#include <array>
#include <string>

#include "core/WholeFile.h"
#include "ports/FileSystem.h"
#include "ports/Workstation.h"

namespace quillon {

namespace {

struct SizeRow {
  std::uint64_t first;
  std::uint64_t last;
  int kind;
};

// In this order; what is in none of the first rows is told by the last one, or is larger.
constexpr std::array kSizes{
    SizeRow{19000, 20000, 1}, SizeRow{98000, 99000, 2}, SizeRow{54300, 54500, 3},
    SizeRow{54000, 54299, 4}, SizeRow{0, 400000, 6},
};
constexpr int kLarger = 5;

}  // namespace

int MapiKindOf(std::uint64_t bytes) {
  for (const auto& row : kSizes) {
    if (bytes >= row.first && bytes <= row.last) return row.kind;
  }
  return kLarger;
}

int FindMapiKind(FileSystem& files, Workstation& workstation) {
  const auto windows = WithSeparator(files, workstation.WindowsDirectory()) + "SYSTEM32";
  for (const auto& directory : {windows, workstation.SystemDirectory()}) {
    const auto file = files.Open(WithSeparator(files, directory) + "MAPI.DLL", OpenMode::kRead);
    const auto size = file != nullptr ? file->Size() : std::nullopt;
    if (size) return MapiKindOf(*size);
  }
  return 0;
}

}  // namespace quillon
