// The class object of Server: makes one object per request, and refuses from the moment the process
// ends.
#pragma once

#include <functional>

#include "automation/ComObject.h"

namespace quillon {

class ClassFactory final : public ComObject<IClassFactory> {
 public:
  // `make` returns a new object with one reference; it may throw.
  using Maker = std::function<IUnknown*()>;

  ClassFactory(ProcessLifetime& lifetime, Maker make);

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

 private:
  ProcessLifetime& lifetime_;
  Maker make_;
  unsigned locks_ = 0;
};

}  // namespace quillon
