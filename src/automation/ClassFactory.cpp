#include "automation/ClassFactory.h"

#include <utility>

#include "automation/ComCall.h"
#include "platform/win32/ComPtr.h"

namespace quillon {

ClassFactory::ClassFactory(ProcessLifetime& lifetime, const wchar_t* errorSource, Maker make)
    : lifetime_(lifetime), errorSource_(errorSource), make_(std::move(make)) {}

HRESULT STDMETHODCALLTYPE ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
  return ComCall(errorSource_, [&] {
    if (object == nullptr) throw HresultError(E_POINTER);
    *object = nullptr;
    if (outer != nullptr) throw HresultError(CLASS_E_NOAGGREGATION);
    if (lifetime_.Ended()) throw HresultError(CO_E_SERVER_STOPPING);
    const auto made = ComPtr<IUnknown>::Attach(make_());
    ThrowIfFailed(made->QueryInterface(iid, object));
  });
}

HRESULT STDMETHODCALLTYPE ClassFactory::LockServer(BOOL lock) {
  if (lock == FALSE) {
    if (locks_ == 0) return E_UNEXPECTED;
    --locks_;
    lifetime_.Release();
  } else if (lifetime_.Ended()) {
    return CO_E_SERVER_STOPPING;
  } else {
    ++locks_;
    lifetime_.Acquire();
  }
  return S_OK;
}

}  // namespace quillon
