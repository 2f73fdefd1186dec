// Values of automation objects as VARIANTs.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "platform/win32/Variant.h"
#include "ports/AutomationObject.h"

namespace quillon {

Variant VariantOf(const AutomationValue& value);

// What has no counterpart reads as no value at all.
AutomationValue ValueOf(const VARIANT& variant);

}  // namespace quillon
