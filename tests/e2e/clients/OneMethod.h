// An automation object without type information that has one method, whose number is 1.
#pragma once

#include <windows.h>
#include <oaidl.h>

class OneMethod : public IDispatch {
 public:
  explicit OneMethod(const wchar_t* name) : name_(name) {}

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    ids[0] = 1;
    return count == 1 && lstrcmpiW(names[0], name_) == 0 ? S_OK : DISP_E_UNKNOWNNAME;
  }

 private:
  const wchar_t* const name_;
};
