#include "automation/CallFrame.h"

#include <cstring>
#include <new>

#include "automation/ComCall.h"
#include "automation/Conversion.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"

namespace quillon {
namespace {

bool IsArray(VARTYPE type) {
  return (type & VT_ARRAY) != 0;
}

bool IsLeftOut(const VARIANT& value) {
  return V_VT(&value) == VT_ERROR && V_ERROR(&value) == DISP_E_PARAMNOTFOUND;
}

VARIANT LeftOut() {
  VARIANT value = {};
  V_VT(&value) = VT_ERROR;
  V_ERROR(&value) = DISP_E_PARAMNOTFOUND;
  return value;
}

// A value that has no conversion to the wanted type has the wrong type, however the system puts it.
HRESULT AsArgumentError(HRESULT result) {
  return result == DISP_E_BADVARTYPE || result == E_INVALIDARG ? DISP_E_TYPEMISMATCH : result;
}

// A new array with the elements of a one-dimensional one in the other element type: BSTR or
// VARIANT.
template <class From, class To, class Convert>
HRESULT ConvertArray(SAFEARRAY* source, VARTYPE type, Variant& target, Convert convert) {
  const ArrayElements<From> from(source);
  if (source != nullptr && !from.Locked()) return DISP_E_TYPEMISMATCH;
  SafeArray made = SafeArray::Make(type, from.Get().size());
  if (!made) return E_OUTOFMEMORY;
  {
    const ArrayElements<To> to(made.Get());
    for (std::size_t i = 0; i < from.Get().size(); ++i) {
      const HRESULT result = convert(from.Get()[i], to.Get()[i]);
      if (FAILED(result)) return AsArgumentError(result);
    }
  }
  V_ARRAY(target.Put()) = made.Detach();
  V_VT(&target.Get()) = static_cast<VARTYPE>(VT_ARRAY | type);
  return S_OK;
}

HRESULT TextsFromVariants(SAFEARRAY* source, LCID locale, Variant& target) {
  return ConvertArray<VARIANT, BSTR>(source, VT_BSTR, target, [&](VARIANT& from, BSTR& to) {
    Variant text;
    const HRESULT result = VariantChangeTypeEx(&text.Get(), &from, locale, 0, VT_BSTR);
    if (FAILED(result)) return result;
    const VARIANT content = text.Detach();
    to = V_BSTR(&content);
    return S_OK;
  });
}

HRESULT VariantsFromTexts(SAFEARRAY* source, Variant& target) {
  return ConvertArray<BSTR, VARIANT>(source, VT_VARIANT, target, [](BSTR& from, VARIANT& to) {
    V_BSTR(&to) = SysAllocStringLen(from, SysStringLen(from));
    if (V_BSTR(&to) == nullptr) return E_OUTOFMEMORY;
    V_VT(&to) = VT_BSTR;
    return S_OK;
  });
}

// Puts `value` into `target` as the given type. Arrays are arrays of BSTR or of VARIANT.
HRESULT Convert(VARIANT& value, VARTYPE type, LCID locale, Variant& target) {
  if (V_VT(&value) == type) return VariantCopy(target.Put(), &value);
  if (type == (VT_ARRAY | VT_VARIANT) && V_VT(&value) == (VT_ARRAY | VT_BSTR)) {
    return VariantsFromTexts(V_ARRAY(&value), target);
  }
  if (type == (VT_ARRAY | VT_BSTR)) {
    if (V_VT(&value) == (VT_ARRAY | VT_VARIANT)) {
      return TextsFromVariants(V_ARRAY(&value), locale, target);
    }
    // A variable that is not an array yet.
    if (V_VT(&value) != VT_EMPTY && V_VT(&value) != VT_NULL) return DISP_E_TYPEMISMATCH;
    V_ARRAY(target.Put()) = nullptr;
    V_VT(&target.Get()) = type;
    return S_OK;
  }
  if (IsArray(V_VT(&value)) || IsArray(type)) return DISP_E_TYPEMISMATCH;
  return AsArgumentError(VariantChangeTypeEx(&target.Get(), &value, locale, 0, type));
}

// Frees what stands where a typed reference points to, and moves the value there.
HRESULT MoveIntoReference(VARTYPE type, void* place, Variant& value) {
  if (IsArray(type)) {
    auto** array = static_cast<SAFEARRAY**>(place);
    const HRESULT result = *array == nullptr ? S_OK : SafeArrayDestroy(*array);
    if (FAILED(result)) return result;  // locked by the caller
  } else if (type == VT_BSTR) {
    SysFreeString(*static_cast<BSTR*>(place));
  } else if (type == VT_DISPATCH || type == VT_UNKNOWN) {
    if (auto* object = *static_cast<IUnknown**>(place); object != nullptr) object->Release();
  }
  const VARIANT moved = value.Detach();
  std::memcpy(place, &V_UI1(&moved), PayloadSize(type));
  return S_OK;
}

}  // namespace

CallFrame::CallFrame(const Function& function, LCID locale)
    : function_(function), locale_(locale), arguments_(function.parameters.size()) {}

HRESULT CallFrame::Match(const DISPPARAMS& given, UINT* argumentError) {
  const UINT named = given.cNamedArgs;
  if (given.cArgs > arguments_.size() || named > given.cArgs) return DISP_E_BADPARAMCOUNT;
  const auto take = [&](std::size_t parameter, UINT index) {
    arguments_[parameter].given = &given.rgvarg[index];
    arguments_[parameter].index = index;
  };
  // Positional arguments stand in reverse order behind the named ones.
  for (UINT i = 0; i < given.cArgs - named; ++i) take(i, given.cArgs - 1 - i);
  for (UINT i = 0; i < named; ++i) {
    const DISPID name = given.rgdispidNamedArgs[i];
    const bool value = name == DISPID_PROPERTYPUT && function_.IsPut();
    const std::size_t parameter = value ? arguments_.size() - 1 : static_cast<std::size_t>(name);
    if (parameter >= arguments_.size() || arguments_[parameter].given != nullptr) {
      if (argumentError != nullptr) *argumentError = i;
      return DISP_E_PARAMNOTFOUND;
    }
    take(parameter, i);
  }
  return S_OK;
}

HRESULT CallFrame::TakeArguments(const DISPPARAMS& all, UINT* argumentError) {
  HRESULT result = Match(all, argumentError);
  for (std::size_t i = 0; SUCCEEDED(result) && i < arguments_.size(); ++i) {
    Argument& argument = arguments_[i];
    const bool given = argument.given != nullptr;
    if (given && !IsLeftOut(Dereference(*argument.given))) {
      result = TakeValue(function_.parameters[i], argument);
    } else {
      result = function_.parameters[i].optional ? S_OK : DISP_E_PARAMNOTOPTIONAL;
      argument.passed = LeftOut();
    }
    if (FAILED(result) && given && argumentError != nullptr) *argumentError = argument.index;
  }
  return result;
}

HRESULT CallFrame::TakeValue(const Parameter& parameter, Argument& argument) const {
  VARIANT value = Dereference(*argument.given);
  if (!parameter.byReference && (parameter.type == VT_VARIANT || parameter.type == V_VT(&value))) {
    argument.passed = value;
    return S_OK;
  }
  const HRESULT result = Convert(value, parameter.type, locale_, argument.owned);
  const bool empty = V_VT(&value) == VT_EMPTY || V_VT(&value) == VT_NULL;
  if (FAILED(result) && parameter.type == VT_DISPATCH && !parameter.byReference &&
      (empty || !function_.IsPut())) {
    // What is no object comes as none: the methods say themselves what is wrong with that.
    V_VT(&argument.passed) = VT_DISPATCH;
    return S_OK;
  }
  if (FAILED(result)) return result;
  argument.before = argument.owned.Get();
  argument.passed = argument.owned.Get();
  if (parameter.byReference) {
    V_VT(&argument.passed) = static_cast<VARTYPE>(VT_BYREF | parameter.type);
    V_BYREF(&argument.passed) = &V_UI1(&argument.owned.Get());
  }
  return S_OK;
}

HRESULT CallFrame::Call(void* object) {
  std::vector<VARTYPE> types;
  std::vector<VARIANTARG*> values;
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    const Parameter& parameter = function_.parameters[i];
    types.push_back(static_cast<VARTYPE>(parameter.type | (parameter.byReference ? VT_BYREF : 0)));
    values.push_back(&arguments_[i].passed);
  }
  VARIANT place = {};
  if (function_.result != VT_EMPTY) {
    V_VT(&place) = static_cast<VARTYPE>(VT_BYREF | function_.result);
    const bool whole = function_.result == VT_VARIANT;
    V_BYREF(&place) = whole ? static_cast<void*>(&result_.Get()) : &V_UI1(&result_.Get());
    if (!whole) V_VT(&result_.Get()) = function_.result;
    types.push_back(V_VT(&place));
    values.push_back(&place);
  }
  Variant outcome;
  SetErrorInfo(0, nullptr);
  const HRESULT called =
      DispCallFunc(object, function_.vtableOffset, CC_STDCALL, VT_ERROR,
                   static_cast<UINT>(values.size()), types.data(), values.data(), &outcome.Get());
  return FAILED(called) ? called : V_ERROR(&outcome.Get());
}

HRESULT CallFrame::HandBack() {
  for (std::size_t i = 0; i < arguments_.size(); ++i) {
    const Parameter& parameter = function_.parameters[i];
    if (!parameter.handedBack) continue;
    const HRESULT result = HandBackOne(parameter, arguments_[i]);
    if (FAILED(result)) return result;
  }
  return S_OK;
}

HRESULT CallFrame::HandBackOne(const Parameter& parameter, Argument& argument) const {
  VARIANT* target = argument.given;
  while (V_VT(target) == (VT_BYREF | VT_VARIANT)) target = V_VARIANTREF(target);
  const bool typed = (V_VT(target) & VT_BYREF) != 0;
  if (!typed && target == argument.given) return S_OK;  // passed by value: nobody waits for it

  // What the function left alone stays as the caller has it; an unset variable gets the value all
  // the same.
  const bool scalar = parameter.type != VT_BSTR && !IsArray(parameter.type);
  if (scalar && V_VT(target) != VT_EMPTY &&
      std::memcmp(&V_UI1(&argument.before), &V_UI1(&argument.owned.Get()),
                  PayloadSize(parameter.type)) == 0) {
    return S_OK;
  }
  VARTYPE wanted = IsArray(parameter.type) ? VARTYPE{VT_ARRAY | VT_VARIANT} : parameter.type;
  if (typed) wanted = V_VT(target) & static_cast<VARTYPE>(~VT_BYREF);

  Variant converted;
  if (wanted == parameter.type) {
    converted = std::move(argument.owned);
  } else {
    const HRESULT result = Convert(argument.owned.Get(), wanted, locale_, converted);
    if (FAILED(result)) return result;
  }
  if (typed) return MoveIntoReference(wanted, V_BYREF(target), converted);
  const HRESULT cleared = VariantClear(target);
  if (SUCCEEDED(cleared)) *target = converted.Detach();
  return cleared;
}

void CallFrame::MoveResult(VARIANT& result) noexcept {
  result = result_.Detach();
}

HRESULT CallFrame::ReportFailure(HRESULT failure, const wchar_t* source, EXCEPINFO* exception,
                                 UINT* argumentError) const {
  ComPtr<IErrorInfo> info;
  GetErrorInfo(0, info.Put());
  if (failure == DISP_E_TYPEMISMATCH || failure == DISP_E_OVERFLOW) {
    for (std::size_t i = arguments_.size(); i-- > 0;) {
      const bool open = function_.parameters[i].type == VT_VARIANT;
      if (open && argumentError != nullptr) *argumentError = arguments_[i].index;
    }
  }
  if (HRESULT_FACILITY(failure) == FACILITY_DISPATCH) return failure;
  if (exception == nullptr) return DISP_E_EXCEPTION;
  *exception = {};
  exception->scode = failure;
  if (info) {
    info->GetSource(&exception->bstrSource);
    info->GetDescription(&exception->bstrDescription);
  }
  if (exception->bstrSource == nullptr) {
    exception->bstrSource = Bstr(std::wstring_view(source)).Detach();
  }
  return DISP_E_EXCEPTION;
}

}  // namespace quillon
