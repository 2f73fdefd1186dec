#include "automation/Conversion.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "core/ServerError.h"
#include "platform/win32/Bstr.h"

namespace quillon {
namespace {

// How many objects in a row may stand for another object as their default property.
constexpr int kMostDefaultProperties = 8;

[[noreturn]] void ThrowMismatch() {
  throw ConversionError(ConversionError::Reason::TypeMismatch);
}

Variant ChangeType(VARIANT variant, VARTYPE type) {
  Variant changed;
  const HRESULT result =
      VariantChangeTypeEx(&changed.Get(), &variant, LOCALE_USER_DEFAULT, 0, type);
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  if (result == DISP_E_OVERFLOW) throw ConversionError(ConversionError::Reason::Overflow);
  if (FAILED(result)) ThrowMismatch();
  return changed;
}

template <class Number>
Value NearestNumber(Number number) {
  if (number >= Number{0}
          ? number <= static_cast<Number>(std::numeric_limits<std::int32_t>::max())
          : static_cast<std::int64_t>(number) >= std::numeric_limits<std::int32_t>::min()) {
    return static_cast<std::int32_t>(number);
  }
  return static_cast<double>(number);
}

Variant DefaultProperty(IDispatch* object) {
  Variant value;
  DISPPARAMS none = {};
  if (object == nullptr || FAILED(object->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT,
                                                 DISPATCH_PROPERTYGET | DISPATCH_METHOD, &none,
                                                 value.Put(), nullptr, nullptr))) {
    ThrowMismatch();
  }
  return value;
}

Value FromVariant(const VARIANT& variant, int objectsLeft) {
  const VARIANT value = Dereference(variant);
  switch (V_VT(&value)) {
    case VT_EMPTY:
      return std::monostate{};
    case VT_NULL:
      return NullValue{};
    case VT_BOOL:
      return V_BOOL(&value) != VARIANT_FALSE;
    case VT_I1:
      return static_cast<std::int16_t>(static_cast<signed char>(V_I1(&value)));
    case VT_UI1:
      return static_cast<std::int16_t>(V_UI1(&value));
    case VT_I2:
      return static_cast<std::int16_t>(V_I2(&value));
    case VT_UI2:
      return static_cast<std::int32_t>(V_UI2(&value));
    case VT_I4:
    case VT_INT:
      return static_cast<std::int32_t>(V_I4(&value));
    case VT_UI4:
    case VT_UINT:
      return NearestNumber<std::uint64_t>(V_UI4(&value));
    case VT_I8:
      return NearestNumber<std::int64_t>(V_I8(&value));
    case VT_UI8:
      return NearestNumber<std::uint64_t>(V_UI8(&value));
    case VT_R4:
      return V_R4(&value);
    case VT_R8:
      return V_R8(&value);
    case VT_CY:
    case VT_DECIMAL:
      return V_R8(&ChangeType(value, VT_R8).Get());
    case VT_DATE:
      return Utf8FromBstr(V_BSTR(&ChangeType(value, VT_BSTR).Get()));
    case VT_BSTR:
      return Utf8FromBstr(V_BSTR(&value));
    case VT_DISPATCH:
    case VT_UNKNOWN: {
      if (objectsLeft == 0) ThrowMismatch();
      const Variant object = ChangeType(value, VT_DISPATCH);
      return FromVariant(DefaultProperty(V_DISPATCH(&object.Get())).Get(), objectsLeft - 1);
    }
    default:
      ThrowMismatch();
  }
}

struct VariantMaker {
  VARIANT& variant;

  void operator()(std::monostate) const { V_VT(&variant) = VT_EMPTY; }
  void operator()(NullValue) const { V_VT(&variant) = VT_NULL; }
  void operator()(bool value) const {
    V_VT(&variant) = VT_BOOL;
    V_BOOL(&variant) = value ? VARIANT_TRUE : VARIANT_FALSE;
  }
  void operator()(std::int16_t value) const {
    V_VT(&variant) = VT_I2;
    V_I2(&variant) = value;
  }
  void operator()(std::int32_t value) const {
    V_VT(&variant) = VT_I4;
    V_I4(&variant) = value;
  }
  void operator()(float value) const {
    V_VT(&variant) = VT_R4;
    V_R4(&variant) = value;
  }
  void operator()(double value) const {
    V_VT(&variant) = VT_R8;
    V_R8(&variant) = value;
  }
  void operator()(const std::string& value) const {
    V_BSTR(&variant) = Bstr(value).Detach();
    V_VT(&variant) = VT_BSTR;
  }
};

}  // namespace

std::size_t PayloadSize(VARTYPE type) noexcept {
  if ((type & (VT_BYREF | VT_ARRAY)) != 0) return sizeof(void*);
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    default:
      return 4;
  }
}

VARIANT Dereference(const VARIANT& variant) noexcept {
  VARIANT view = variant;
  while (V_VT(&view) == (VT_BYREF | VT_VARIANT)) view = *V_VARIANTREF(&view);
  if ((V_VT(&view) & VT_BYREF) == 0) return view;
  const void* target = V_BYREF(&view);
  const VARTYPE type = V_VT(&view) & static_cast<VARTYPE>(~VT_BYREF);
  if (type == VT_DECIMAL) {
    V_DECIMAL(&view) = *static_cast<const DECIMAL*>(target);
  } else {
    std::memcpy(&V_UI1(&view), target, PayloadSize(type));
  }
  V_VT(&view) = type;
  return view;
}

Value ValueFromVariant(const VARIANT& variant) {
  return FromVariant(variant, kMostDefaultProperties);
}

Variant VariantFromValue(const Value& value) {
  Variant variant;
  std::visit(VariantMaker{variant.Get()}, value);
  return variant;
}

SafeArray ArrayFromTexts(const std::vector<std::string>& texts) {
  SafeArray array = SafeArray::Make(VT_BSTR, texts.size());
  if (!array) throw std::bad_alloc();
  const ArrayElements<BSTR> elements(array.Get());
  for (std::size_t i = 0; i < texts.size(); ++i) elements.Get()[i] = Bstr(texts[i]).Detach();
  return array;
}

}  // namespace quillon
