// IDispatch over a dual interface: names and parameter types come from the type library, calls go
// through the vtable.
//
// Where it does more than the system's own ITypeInfo::Invoke: a script's by-reference argument
// (VT_BYREF|VT_VARIANT) is taken out of its variant, converted to the declared type and written
// back; arrays written back into a variant hold variants, which is all that scripts can index; the
// number of arguments is checked; puArgErr is set; a method called as a property get, or the other
// way round, works.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32/ComPtr.h"

namespace quillon {

// The type of a parameter, as passed in the vtable: `type` by value, or a pointer to it.
struct Parameter {
  std::wstring name;
  VARTYPE type = VT_EMPTY;
  bool byReference = false;
  bool optional = false;    // a variant that may be left out
  bool handedBack = false;  // what a reference leads to is also a result
};

struct Function {
  DISPID id = DISPID_UNKNOWN;
  INVOKEKIND kind = INVOKE_FUNC;
  ULONG vtableOffset = 0;
  std::vector<Parameter> parameters;  // without the result
  VARTYPE result = VT_EMPTY;          // VT_EMPTY: none

  bool IsPut() const noexcept { return (kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0; }
};

class DualInterface {
 public:
  // Throws HresultError.
  DualInterface(ComPtr<ITypeInfo> info, const wchar_t* errorSource);

  const std::vector<Function>& Functions() const noexcept { return functions_; }
  // Where the errors of its members come from.
  const wchar_t* ErrorSource() const noexcept { return errorSource_; }

  // The four methods of IDispatch, for the object whose vtable is given.
  HRESULT GetTypeInfo(UINT index, ITypeInfo** info) const noexcept;
  HRESULT GetIDsOfNames(REFIID iid, OLECHAR** names, UINT count, DISPID* ids) const noexcept;
  HRESULT Invoke(void* object, DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* given,
                 VARIANT* result, EXCEPINFO* exception, UINT* argumentError) const noexcept;

 private:
  void ReadFunctions(ITypeInfo* vtableInfo);
  DISPID FindMember(std::wstring_view name) const noexcept;
  DISPID FindParameter(DISPID member, std::wstring_view name) const noexcept;
  // Null when the member cannot be used that way.
  const Function* Find(DISPID id, WORD flags, const DISPPARAMS& given) const noexcept;

  ComPtr<ITypeInfo> info_;
  const wchar_t* errorSource_;
  std::vector<Function> functions_;                     // in the order of the vtable
  std::vector<std::pair<std::wstring, DISPID>> names_;  // in small letters, sorted
};

}  // namespace quillon
