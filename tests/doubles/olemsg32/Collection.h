// What collections have in common: finding an item by number or name, and walking.
#pragma once

#include <cstddef>
#include <optional>

#include "core/Text.h"
#include "desk/win32/Values.h"
#include "olemsg32/Errors.h"

namespace desk {

// The place from 0 of an item that is asked for by number from 1 or by name. `nameOf` gives the
// name of the item in a place. Throws kNotFound.
template <class NameOf>
std::size_t PlaceOf(const VARIANT& asked, std::size_t count, NameOf nameOf) {
  if (V_VT(&asked) == VT_BSTR) {
    const std::string name = TextOf(asked);
    for (std::size_t i = 0; i < count; ++i) {
      if (quillon::EqualsIgnoreCase(nameOf(i), name)) return i;
    }
    throw MemberError(MapiError::kNotFound);
  }
  const long number = NumberOf(asked);
  if (number < 1 || static_cast<std::size_t>(number) > count) {
    throw MemberError(MapiError::kNotFound);
  }
  return static_cast<std::size_t>(number) - 1;
}

// For items that have no name.
inline std::size_t PlaceOf(const VARIANT& asked, std::size_t count) {
  if (V_VT(&asked) == VT_BSTR) throw CallError(DISP_E_TYPEMISMATCH);
  return PlaceOf(asked, count, [](std::size_t) { return std::string_view(); });
}

// The place of a walk through `count` items; none before the first and behind the last.
class Cursor {
 public:
  std::optional<std::size_t> First(std::size_t count) { return Go(1, count); }
  std::optional<std::size_t> Last(std::size_t count) { return Go(count, count); }
  std::optional<std::size_t> Next(std::size_t count) { return Go(at_ + 1, count); }
  std::optional<std::size_t> Previous(std::size_t count) {
    return Go(at_ == 0 ? 0 : at_ - 1, count);
  }

 private:
  std::optional<std::size_t> Go(std::size_t to, std::size_t count) {
    at_ = to > count ? count + 1 : to;
    if (at_ == 0 || at_ > count) return {};
    return at_ - 1;
  }

  std::size_t at_ = 0;  // from 1; 0 before the first
};

}  // namespace desk
