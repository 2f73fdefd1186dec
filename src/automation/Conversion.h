// Automation values and the plain C++ values of the layers below, in both directions.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <string>
#include <vector>

#include "core/Value.h"
#include "platform/win32/SafeArray.h"
#include "platform/win32/Variant.h"

namespace quillon {

// References are followed, and an object stands for the value of its default property. Dates become
// the text that the user's settings give them; numbers of other widths the nearest one.
// ConversionError for arrays, for objects without a default property and for a left-out argument.
Value ValueFromVariant(const VARIANT& variant);

Variant VariantFromValue(const Value& value);

// A zero-based array of BSTR. An empty list is an array without elements.
SafeArray ArrayFromTexts(const std::vector<std::string>& texts);

// What a VT_BYREF variant refers to, else the variant itself: a view that owns nothing, never
// VT_BYREF.
VARIANT Dereference(const VARIANT& variant) noexcept;

// How many bytes of the union a value of this type takes (references and arrays are pointers).
std::size_t PayloadSize(VARTYPE type) noexcept;

}  // namespace quillon
