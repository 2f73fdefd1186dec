// The reference count and the interfaces of a COM object. All objects live in the one apartment of
// the process, so the count needs no lock. An object begins with one reference.
#pragma once

#include <windows.h>
#include <ocidl.h>
#include <oleauto.h>
#include <type_traits>
#include <utility>

#include "automation/ComCall.h"
#include "automation/DualInterface.h"
#include "automation/ProcessLifetime.h"
#include "platform/win32/ComPtr.h"

namespace quillon {

template <class First, class... Others>
class ComObject : public First, public Others... {
 public:
  ComObject() = default;
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IUnknown) *object = static_cast<First*>(this);
    Find<First>(iid, object);
    (Find<Others>(iid, object), ...);
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~ComObject() = default;

 private:
  template <class Interface>
  void Find(REFIID iid, void** object) noexcept {
    if (*object != nullptr) return;
    bool matches = iid == __uuidof(Interface);
    if constexpr (std::is_base_of_v<IDispatch, Interface>) matches |= iid == IID_IDispatch;
    if constexpr (std::is_base_of_v<IProvideClassInfo, Interface>) {
      matches |= iid == IID_IProvideClassInfo;
    }
    if (matches) *object = static_cast<Interface*>(this);
  }

  ULONG references_ = 1;
};

// An object that clients see: a dual interface, error objects, and a process that stays while the
// object lives.
//
// A member runs in Call. It may wait, for a mail server or for a client's object, and meanwhile the
// loop serves whatever other call arrives, of this object too; a member that cannot have that
// refuses it. Should the last client let go meanwhile, the object stays until the call is over.
template <class Interface, class... Others>
class DispatchObject : public ComObject<Interface, ISupportErrorInfo, Others...> {
 public:
  DispatchObject(const DualInterface& type, ProcessLifetime& lifetime)
      : type_(type), lifetime_(lifetime), process_(lifetime) {}

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) override {
    return type_.GetTypeInfo(index, info);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID /*locale*/,
                                          DISPID* ids) override {
    return type_.GetIDsOfNames(iid, names, count, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                   DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                                   UINT* argumentError) override {
    return type_.Invoke(static_cast<Interface*>(this), id, iid, locale, flags, arguments, result,
                        exception, argumentError);
  }
  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
    return iid == __uuidof(Interface) ? S_OK : S_FALSE;
  }

 protected:
  // Runs the body of a member at the COM edge.
  template <class Body>
  HRESULT Call(Body&& body) noexcept {
    const ComPtr<Interface> stay(static_cast<Interface*>(this));
    return ComCall(type_.ErrorSource(), std::forward<Body>(body));
  }
  ProcessLifetime& Lifetime() noexcept { return lifetime_; }
  const wchar_t* ErrorSource() const noexcept { return type_.ErrorSource(); }

 private:
  const DualInterface& type_;
  ProcessLifetime& lifetime_;
  ProcessReference process_;
};

}  // namespace quillon
