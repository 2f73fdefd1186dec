#include "platform/win32/AutomationVariant.h"

#include <new>

#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/SafeArray.h"
#include "platform/win32/Win32AutomationObject.h"

namespace quillon {
namespace {

// One for each kind of value.
struct Writer {
  VARIANT& place;

  void operator()(std::monostate) const {}
  void operator()(AutomationMissing) const {
    V_VT(&place) = VT_ERROR;
    V_ERROR(&place) = DISP_E_PARAMNOTFOUND;
  }
  void operator()(bool truth) const {
    V_VT(&place) = VT_BOOL;
    V_BOOL(&place) = truth ? VARIANT_TRUE : VARIANT_FALSE;
  }
  void operator()(std::int32_t number) const {
    V_VT(&place) = VT_I4;
    V_I4(&place) = number;
  }
  void operator()(double number) const {
    V_VT(&place) = VT_R8;
    V_R8(&place) = number;
  }
  void operator()(AutomationDate date) const {
    V_VT(&place) = VT_DATE;
    V_DATE(&place) = date.days;
  }
  void operator()(const std::string& text) const {
    V_BSTR(&place) = Bstr(text).Detach();
    V_VT(&place) = VT_BSTR;
  }
  void operator()(const AutomationObjectPtr& object) const {
    V_VT(&place) = VT_DISPATCH;
    V_DISPATCH(&place) = DispatchOf(object).Detach();
  }
  void operator()(const std::vector<AutomationValue>& values) const {
    SafeArray array = SafeArray::Make(VT_VARIANT, values.size());
    if (!array) throw std::bad_alloc();
    {
      const ArrayElements<VARIANT> elements(array.Get());
      for (std::size_t i = 0; i < values.size(); ++i) {
        elements.Get()[i] = VariantOf(values[i]).Detach();
      }
    }
    V_ARRAY(&place) = array.Detach();
    V_VT(&place) = VT_ARRAY | VT_VARIANT;
  }
};

AutomationValue ObjectValue(IUnknown* object) {
  return AutomationObjectOf(QueryFor<IDispatch>(object).Get());
}

AutomationValue ListOf(const VARIANT& variant) {
  auto* const array = (V_VT(&variant) & VT_BYREF) != 0 ? *V_ARRAYREF(&variant) : V_ARRAY(&variant);
  std::vector<AutomationValue> values;
  switch (V_VT(&variant) & VT_TYPEMASK) {
    case VT_VARIANT:
      for (const auto& element : ArrayElements<VARIANT>(array).Get()) {
        values.push_back(ValueOf(element));
      }
      return values;
    case VT_BSTR:
      for (auto* const element : ArrayElements<BSTR>(array).Get()) {
        values.emplace_back(Utf8FromBstr(element));
      }
      return values;
    case VT_DISPATCH:
      for (auto* const element : ArrayElements<IDispatch*>(array).Get()) {
        values.emplace_back(AutomationObjectOf(element));
      }
      return values;
    case VT_DATE:
      for (const auto element : ArrayElements<DATE>(array).Get()) {
        values.emplace_back(AutomationDate{element});
      }
      return values;
    default:
      return {};
  }
}

// A number that is neither a text nor a date.
AutomationValue NumberValue(const VARIANT& variant, VARTYPE type) {
  Variant number;
  VARIANT given = variant;  // which is not written to
  if (FAILED(VariantChangeTypeEx(&number.Get(), &given, LOCALE_INVARIANT, 0, type))) return {};
  if (type == VT_I4) return std::int32_t{V_I4(&number.Get())};
  return V_R8(&number.Get());
}

}  // namespace

Variant VariantOf(const AutomationValue& value) {
  Variant variant;
  std::visit(Writer{variant.Get()}, value);
  return variant;
}

AutomationValue ValueOf(const VARIANT& variant) {
  if (V_VT(&variant) == (VT_BYREF | VT_VARIANT)) return ValueOf(*V_VARIANTREF(&variant));
  if ((V_VT(&variant) & VT_ARRAY) != 0) return ListOf(variant);
  if ((V_VT(&variant) & VT_BYREF) != 0) {
    Variant direct;
    VARIANT given = variant;  // which is not written to
    if (FAILED(VariantCopyInd(&direct.Get(), &given))) return {};
    return ValueOf(direct.Get());
  }
  switch (V_VT(&variant)) {
    case VT_BSTR:
      return Utf8FromBstr(V_BSTR(&variant));
    case VT_BOOL:
      return V_BOOL(&variant) != VARIANT_FALSE;
    case VT_DATE:
      return AutomationDate{V_DATE(&variant)};
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return ObjectValue(V_UNKNOWN(&variant));
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
      return NumberValue(variant, VT_I4);
    case VT_EMPTY:
    case VT_NULL:
      return {};
    default:
      return NumberValue(variant, VT_R8);
  }
}

}  // namespace quillon
