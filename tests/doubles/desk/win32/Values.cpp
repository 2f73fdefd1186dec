#include "desk/win32/Values.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <new>
#include <utility>

#include "core/Text.h"
#include "desk/win32/CallErrors.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/SafeArray.h"

namespace desk {
namespace {

Variant Converted(const VARIANT& value, VARTYPE type) {
  Variant converted;
  // The locale is fixed, so that a test reads the same figures on every machine.
  const LCID english = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT);
  const HRESULT result =
      VariantChangeTypeEx(&converted.Get(), const_cast<VARIANT*>(&value), english, 0, type);
  if (result == E_OUTOFMEMORY || result == DISP_E_OVERFLOW) throw CallError(result);
  if (FAILED(result)) throw CallError(DISP_E_TYPEMISMATCH);
  return converted;
}

}  // namespace

Variant FromText(std::string_view text) {
  Variant value;
  V_BSTR(&value.Get()) = quillon::Bstr(text).Detach();
  V_VT(&value.Get()) = VT_BSTR;
  return value;
}

Variant FromNumber(long number) {
  Variant value;
  V_I4(&value.Get()) = number;
  V_VT(&value.Get()) = VT_I4;
  return value;
}

Variant FromFlag(bool flag) {
  Variant value;
  V_BOOL(&value.Get()) = flag ? VARIANT_TRUE : VARIANT_FALSE;
  V_VT(&value.Get()) = VT_BOOL;
  return value;
}

Variant FromObject(ComPtr<IDispatch> object) {
  Variant value;
  V_DISPATCH(&value.Get()) = object.Detach();
  V_VT(&value.Get()) = VT_DISPATCH;
  return value;
}

Variant Nothing() {
  return FromObject({});
}

Variant CopyOf(const VARIANT& value) {
  Variant copy;
  if (FAILED(VariantCopyInd(&copy.Get(), const_cast<VARIANT*>(&value))))
    throw CallError(DISP_E_TYPEMISMATCH);
  return copy;
}

Variant FromList(std::vector<Variant> values) {
  quillon::SafeArray array = quillon::SafeArray::Make(VT_VARIANT, values.size());
  if (!array) throw std::bad_alloc();
  {
    const quillon::ArrayElements<VARIANT> elements(array.Get());
    for (std::size_t i = 0; i < values.size(); ++i) elements.Get()[i] = values[i].Detach();
  }
  Variant list;
  V_ARRAY(&list.Get()) = array.Detach();
  V_VT(&list.Get()) = VT_ARRAY | VT_VARIANT;
  return list;
}

std::vector<Variant> ListOf(const VARIANT& value) {
  std::vector<Variant> values;
  const Variant copy = CopyOf(value);
  if (copy.Type() == (VT_ARRAY | VT_VARIANT)) {
    const quillon::ArrayElements<VARIANT> elements(V_ARRAY(&copy.Get()));
    for (const VARIANT& element : elements.Get()) values.push_back(CopyOf(element));
  } else {
    values.push_back(CopyOf(copy.Get()));
  }
  return values;
}

std::optional<Variant> FromDateText(const std::string& text) {
  SYSTEMTIME time = {};
  const std::array parts{&time.wYear, &time.wMonth, &time.wDay, &time.wHour, &time.wMinute};
  const char* at = text.data();
  const char* end = at + text.size();
  for (WORD* part : parts) {
    const auto [behind, failure] = std::from_chars(at, end, *part);
    if (failure != std::errc()) return {};
    at = behind == end ? end : behind + 1;
  }
  Variant value;
  if (SystemTimeToVariantTime(&time, &V_DATE(&value.Get())) == FALSE) return {};
  V_VT(&value.Get()) = VT_DATE;
  return value;
}

std::string DateTextOf(double date) {
  SYSTEMTIME time = {};
  if (VariantTimeToSystemTime(date, &time) == FALSE) throw CallError(DISP_E_OVERFLOW);
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04u/%02u/%02u %02u:%02u", time.wYear, time.wMonth,
                time.wDay, time.wHour, time.wMinute);
  return text.data();
}

const VARIANT& Dereferenced(const VARIANT& value) {
  return V_VT(&value) == (VT_BYREF | VT_VARIANT) ? *V_VARIANTREF(&value) : value;
}

bool SaysNothing(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_EMPTY:
    case VT_NULL:
      return true;
    case VT_ERROR:
      return V_ERROR(&value) == DISP_E_PARAMNOTFOUND;
    case VT_DISPATCH:
      return V_DISPATCH(&value) == nullptr;
    default:
      return false;
  }
}

std::string TextOf(const VARIANT& value) {
  return quillon::Utf8FromBstr(V_BSTR(&Converted(value, VT_BSTR).Get()));
}
long NumberOf(const VARIANT& value) {
  return V_I4(&Converted(value, VT_I4).Get());
}
bool FlagOf(const VARIANT& value) {
  return V_BOOL(&Converted(value, VT_BOOL).Get()) != VARIANT_FALSE;
}
double DateOf(const VARIANT& value) {
  return V_DATE(&Converted(value, VT_DATE).Get());
}

std::string Shown(const VARIANT& value) {
  const VARTYPE type = V_VT(&value);
  if (type == VT_DISPATCH) return V_DISPATCH(&value) == nullptr ? "Nothing" : "(object)";
  if (SaysNothing(value)) return "-";
  if (type == VT_BOOL) return FlagOf(value) ? "True" : "False";
  try {
    if ((type & VT_ARRAY) == 0) return TextOf(value);
    std::vector<std::string> texts;
    for (const Variant& each : ListOf(value)) texts.push_back(TextOf(each.Get()));
    return quillon::Join(texts, "; ");
  } catch (const CallError&) {
    return "(value)";
  }
}

}  // namespace desk
