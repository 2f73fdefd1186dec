// The arguments and results of members: what a client passes, as the layers below take it, and what
// those answer, as the client gets it.
#pragma once

#include <windows.h>
#include <cstdint>
#include <limits>
#include <oleauto.h>
#include <string>
#include <type_traits>
#include <vector>

#include "automation/ComCall.h"
#include "automation/Conversion.h"
#include "core/ServerError.h"
#include "core/Value.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/SafeArray.h"

namespace quillon {

inline std::string Taken(BSTR text) {
  return Utf8FromBstr(text);
}
inline std::int16_t Taken(short number) {
  return number;
}
inline std::int32_t Taken(LONG number) {
  return number;
}
inline Value Taken(const VARIANT& value) {
  return ValueFromVariant(value);
}

// Not the client's: by this the skin tells the layer below which property is meant.
template <class Selector>
requires std::is_enum_v<Selector> Selector Taken(Selector selector) {
  return selector;
}

inline void Give(VARIANT* place, const Value& value) {
  Output(place) = VariantFromValue(value).Detach();
}
inline void Give(BSTR* place, const Value& value) {
  Output(place) = Bstr(ToText(value)).Detach();
}
inline void Give(short* place, const Value& value) {
  Output(place) = ToInt16(value);
}
inline void Give(LONG* place, std::int32_t value) {
  Output(place) = value;
}

// A list replaces the array that the client passed.
template <class Count>
void GiveList(const std::vector<std::string>& texts, SAFEARRAY** place, Count* count) {
  if (texts.size() > static_cast<std::size_t>(std::numeric_limits<Count>::max())) {
    throw ConversionError(ConversionError::Reason::Overflow);
  }
  SafeArray array = ArrayFromTexts(texts);
  Count& number = Output(count);
  SAFEARRAY*& old = Output(place);
  if (old != nullptr) ThrowIfFailed(SafeArrayDestroy(old));
  old = array.Detach();
  number = static_cast<Count>(texts.size());
}

// A text replaces the one that the client passed.
inline void GiveInstead(BSTR* place, const std::string& text) {
  Bstr made(text);
  SysFreeString(Output(place));
  *place = made.Detach();
}

}  // namespace quillon
