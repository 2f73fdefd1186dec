// The object that hears of operations: it has one method, AsynchNotification.
#pragma once

#include <iostream>
#include <string>

#include "Quillon.h"

// Lives on the stack of who registers it, so it does not count its references.
class Listener final : public IDispatch {
 public:
  bool Ended() const { return ended_; }
  long Result() const { return result_; }  // -1: sent
  const std::wstring& Why() const { return why_; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    *object = id == IID_IUnknown || id == IID_IDispatch ? this : nullptr;
    return *object != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    ids[0] = 1;
    return count == 1 && lstrcmpiW(names[0], L"AsynchNotification") == 0 ? S_OK
                                                                         : DISP_E_UNKNOWNNAME;
  }
  // The arguments come from the last to the first, each a reference to a variant. Short: the
  // sending waits for it.
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* call, VARIANT* result,
                                   EXCEPINFO*, UINT*) override {
    if (call->cArgs != 8) return DISP_E_BADPARAMCOUNT;
    const long kind = Number(call->rgvarg[6]);
    const long total = Number(call->rgvarg[4]);
    if (kind == EventStatus) std::wcout << String(call->rgvarg[0]) << L"\n";
    if (kind == EventProgress && total > 0) {
      std::wcout << Number(call->rgvarg[5]) << L" of " << total << L" bytes\n";
    }
    if (kind == EventEnd && Number(call->rgvarg[7]) == OperationSend) {
      result_ = Number(call->rgvarg[2]);
      why_ = String(call->rgvarg[0]);
      ended_ = true;
    }
    if (result != nullptr) {
      result->vt = VT_I4;
      result->lVal = 0;
    }
    return S_OK;
  }

 private:
  static long Number(VARIANT& argument) {
    Value value;
    VariantCopyInd(value.Place(), &argument);
    return value.Number();
  }
  static std::wstring String(VARIANT& argument) {
    Value value;
    VariantCopyInd(value.Place(), &argument);
    return value.String();
  }

  bool ended_ = false;
  long result_ = 0;
  std::wstring why_;
};
