// The peer of the property benchmark: an automation object with the interface of Server and nothing
// behind it. Every property of type VARIANT is one stored value, everything else is not there. Late
// calls go straight to that value.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "platform/win32/Variant.h"
#include "quillon_h.h"

namespace quillon::bench {

class EmptyServer final : public IServer {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(IServer);
    *object = known ? this : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      delete this;
      PostQuitMessage(0);
    }
    return left;
  }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* ids) override {
    const bool known = lstrcmpiW(names[0], L"subject") == 0;
    ids[0] = known ? 1 : DISPID_UNKNOWN;
    return known ? S_OK : DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD flags, DISPPARAMS* arguments,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    return (flags & DISPATCH_PROPERTYPUT) != 0 ? Store(arguments->rgvarg[0]) : Load(result);
  }

#define GET(name, type)                                        \
  HRESULT STDMETHODCALLTYPE get_##name(type* value) override { \
    return Load(value);                                        \
  }
#define PUT(name, type)                                          \
  HRESULT STDMETHODCALLTYPE put_##name(type newValue) override { \
    return Store(newValue);                                      \
  }
#define GET_PUT(name, type) GET(name, type) PUT(name, type)
#define ABSENT(name, ...)                                \
  HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { \
    return E_NOTIMPL;                                    \
  }
#define METHOD(name) ABSENT(name)
#define METHOD_OF(name, type) ABSENT(name, type)
#define FUNCTION_OF(name, type, result) ABSENT(name, type, result*)
#include "automation/ServerMembers.inc"
  GET_PUT(signed, VARIANT)
  ABSENT(AddXHeader, BSTR, BSTR)
  ABSENT(AddHeader, BSTR, BSTR)
  ABSENT(AddInlineFile, BSTR, BSTR)
  ABSENT(AddAttachmentEx, BSTR, BSTR, BSTR)
  ABSENT(AddAlternative, BSTR, BSTR, short)
  ABSENT(CopyFolder, BSTR, BSTR, short)
  ABSENT(GetMessageItems, short, SAFEARRAY**, short*)
  ABSENT(GetHeaderItems, short, SAFEARRAY**, short*)
  ABSENT(GetFolderList, BSTR, short, short, SAFEARRAY**, LONG*)
  ABSENT(GetFolderListString, BSTR, short, BSTR, short, BSTR*, LONG*)
  ABSENT(get_FolderList, BSTR, short, short, IDispatch**)
  ABSENT(get_HeaderItems, short, IDispatch**)
  ABSENT(get_MessageItems, short, IDispatch**)
  ABSENT(GetMessageItem, VARIANT, LONG, VARIANT*)
  ABSENT(AsynchObjectRegister, IDispatch*, LONG, LONG, VARIANT)
  ABSENT(AsynchObjectUnregister, IDispatch*, LONG)
  ABSENT(get_SessionObject, IDispatch**)
  ABSENT(put_SessionObject, IDispatch*)
  ABSENT(putref_SessionObject, IDispatch*)
  ABSENT(get_MessageObject, IDispatch**)
  ABSENT(get_FolderObject, IDispatch**)
  ABSENT(DecodeError, LONG, short*, LONG*, LONG*, BSTR*)
#undef GET
#undef PUT
#undef GET_PUT
#undef ABSENT
#undef METHOD
#undef METHOD_OF
#undef FUNCTION_OF

 private:
  ~EmptyServer() = default;

  HRESULT Load(VARIANT* value) {
    return VariantCopy(value, &value_.Get());
  }
  HRESULT Store(VARIANT value) {
    return VariantCopy(&value_.Get(), &value);
  }
  template <class Type>
  HRESULT Load(Type*) {
    return E_NOTIMPL;
  }
  template <class Type>
  HRESULT Store(Type*) {
    return E_NOTIMPL;
  }
  HRESULT Store(short) {
    return E_NOTIMPL;
  }

  ULONG references_ = 0;
  Variant value_;
};

}  // namespace quillon::bench
