// A server process in the test program: Server objects behind their COM skin, called as clients
// call them.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <string>
#include <vector>

#include "automation/DualInterface.h"
#include "automation/ProcessLifetime.h"
#include "automation/ServerObject.h"
#include "automation/TypeLibrary.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/Variant.h"
#include "support/TestWorld.h"

namespace quillon::testing {

struct Apartment {
  Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
  ~Apartment() { CoUninitialize(); }
};

class ComWorld {
 public:
  ComPtr<IServer> NewServer() {
    return ComPtr<IServer>::Attach(new ServerObject(types_, lifetime_, world_.environment));
  }

  TestWorld& World() { return world_; }
  ProcessLifetime& Lifetime() { return lifetime_; }
  const DualInterface& ServerType() { return types_.server.dual; }
  const DualInterface& ItemsType() { return types_.items; }
  const TypeLibrary& Library() { return library_; }

 private:
  Apartment apartment_;
  TestWorld world_;
  TypeLibrary library_{ProgramPath()};
  ServerTypes types_{library_};
  ProcessLifetime lifetime_;
};

// Variants as a client makes them.
inline Variant Text(std::string_view text) {
  Variant variant;
  V_BSTR(&variant.Get()) = Bstr(text).Detach();
  V_VT(&variant.Get()) = VT_BSTR;
  return variant;
}
inline Variant Number(LONG number) {
  Variant variant;
  V_I4(&variant.Get()) = number;
  V_VT(&variant.Get()) = VT_I4;
  return variant;
}
inline Variant Error(SCODE code) {
  Variant variant;
  V_ERROR(&variant.Get()) = code;
  V_VT(&variant.Get()) = VT_ERROR;
  return variant;
}
// A script's by-reference argument.
inline VARIANT By(Variant& variable) {
  VARIANT reference = {};
  V_VT(&reference) = VT_BYREF | VT_VARIANT;
  V_VARIANTREF(&reference) = &variable.Get();
  return reference;
}
// A typed one, of a client that knows the declaration.
inline VARIANT By(VARTYPE type, void* variable) {
  VARIANT reference = {};
  V_VT(&reference) = static_cast<VARTYPE>(VT_BYREF | type);
  V_BYREF(&reference) = variable;
  return reference;
}

// The value as text; "?" and its type when it has none.
inline std::string Shown(const VARIANT& value) {
  Variant text;
  VARIANT copy = value;
  if (FAILED(VariantChangeTypeEx(&text.Get(), &copy, 0x409, 0, VT_BSTR))) {
    return "?" + std::to_string(V_VT(&value));
  }
  return Utf8FromBstr(V_BSTR(&text.Get()));
}

struct Outcome {
  HRESULT result = S_OK;
  Variant value;
  HRESULT code = S_OK;  // with the next two: what EXCEPINFO says
  std::string source;
  std::string description;
  UINT argument = 99;  // which argument is wrong
};

// Calls a member as scripts do: by name, arguments in their written order. Those in `names` are the
// last ones.
inline Outcome Invoke(IDispatch* object, const std::wstring& member, WORD flags,
                      std::vector<VARIANT> arguments = {}, std::vector<std::wstring> names = {}) {
  Outcome outcome;
  std::vector<wchar_t*> wanted;
  std::wstring name = member;
  wanted.push_back(name.data());
  for (std::wstring& parameter : names) wanted.push_back(parameter.data());
  std::vector<DISPID> ids(wanted.size());
  outcome.result = object->GetIDsOfNames(IID_NULL, wanted.data(), static_cast<UINT>(wanted.size()),
                                         LOCALE_USER_DEFAULT, ids.data());
  if (FAILED(outcome.result)) return outcome;
  const std::vector<VARIANT> backwards(arguments.rbegin(), arguments.rend());
  std::vector<DISPID> named(ids.rbegin(), ids.rend() - 1);
  if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
    named.insert(named.begin(), DISPID_PROPERTYPUT);
  }
  std::vector<VARIANT> passed = backwards;
  DISPPARAMS parameters = {passed.data(), named.data(), static_cast<UINT>(passed.size()),
                           static_cast<UINT>(named.size())};
  EXCEPINFO exception = {};
  outcome.result = object->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                  outcome.value.Put(), &exception, &outcome.argument);
  outcome.code = exception.scode;
  outcome.source = Utf8FromBstr(exception.bstrSource);
  outcome.description = Utf8FromBstr(exception.bstrDescription);
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  return outcome;
}

}  // namespace quillon::testing
