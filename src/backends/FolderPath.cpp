#include "backends/FolderPath.h"

#include <algorithm>

#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kDefaultDelimiter = "\\\\";

std::string SingleBackslashes(std::string_view path) {
  std::string single;
  for (std::size_t at = 0; at < path.size(); ++at) {
    if (path.substr(at).starts_with(kDefaultDelimiter)) ++at;
    single += path[at];
  }
  return single;
}

}  // namespace

std::optional<std::vector<std::string>> SplitFolderPath(std::string_view path,
                                                        std::string_view delimiter) {
  if (delimiter == kDefaultDelimiter) return SplitFolderPath(SingleBackslashes(path), "\\");
  if (delimiter.empty()) {
    return path.empty() ? std::vector<std::string>() : std::vector{std::string(path)};
  }
  if (path.starts_with(delimiter)) path.remove_prefix(delimiter.size());
  if (path.ends_with(delimiter)) path.remove_suffix(delimiter.size());
  if (path.empty()) return std::vector<std::string>();
  auto names = Split(path, delimiter);
  const bool malformed =
      std::any_of(names.begin(), names.end(), [](const auto& name) { return name.empty(); });
  if (malformed) return std::nullopt;
  return names;
}

}  // namespace quillon
