// Boolean-like values of the public interface: short integers, True = -1 and False = 0.
#pragma once

#include <cstdint>

namespace quillon {

using ShortBool = std::int16_t;

inline constexpr ShortBool kTrue = -1;
inline constexpr ShortBool kFalse = 0;

constexpr ShortBool ToShortBool(bool value) noexcept {
  return value ? kTrue : kFalse;
}

}  // namespace quillon
