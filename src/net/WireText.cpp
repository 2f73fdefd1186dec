#include "net/WireText.h"

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

namespace {

constexpr std::string_view kLineBreakers("\r\n\0", 3);

}  // namespace

bool IsWireSafe(std::string_view text) {
  return text.find_first_of(kLineBreakers) == std::string_view::npos;
}

void RequireWireSafe(std::string_view text, std::string_view what) {
  if (IsWireSafe(text)) return;
  throw ServerError(error_code::kInvalidValue,
                    std::string(what) + " holds a line break or a NUL character.");
}

std::string HeaderText(std::string_view value) {
  std::string result;
  result.reserve(value.size());
  for (;;) {
    const auto run = value.find_first_of(kLineBreakers);
    result.append(value.substr(0, run));
    if (run == std::string_view::npos) return result;
    result.push_back(' ');
    const auto next = value.find_first_not_of(kLineBreakers, run);
    if (next == std::string_view::npos) return result;
    value.remove_prefix(next);
  }
}

}  // namespace quillon
