// Plain values as automation has them. Texts are UTF-8.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/win32/ComPtr.h"
#include "platform/win32/Variant.h"

namespace desk {

using quillon::ComPtr;
using quillon::Variant;

Variant FromText(std::string_view text);
Variant FromNumber(long number);
Variant FromFlag(bool flag);
Variant FromObject(ComPtr<IDispatch> object);  // null is Nothing
Variant Nothing();
Variant CopyOf(const VARIANT& value);

// An array, and the elements of one; any other value is its only element.
Variant FromList(std::vector<Variant> values);
std::vector<Variant> ListOf(const VARIANT& value);

// A store's "YYYY/MM/DD HH:MM" as automation's date, and back; nothing for a text that is no date.
std::optional<Variant> FromDateText(const std::string& text);
std::string DateTextOf(double date);

// The value behind a reference.
const VARIANT& Dereferenced(const VARIANT& value);

// Left out, empty or no object.
bool SaysNothing(const VARIANT& value);

// Throw CallError when the value has no such form.
std::string TextOf(const VARIANT& value);
long NumberOf(const VARIANT& value);
bool FlagOf(const VARIANT& value);
double DateOf(const VARIANT& value);

// A value as it stands in the log of calls.
std::string Shown(const VARIANT& value);

}  // namespace desk
