// The class object of a public class: makes one object per request, and refuses from the moment the
// process ends.
#pragma once

#include <functional>

#include "automation/ComObject.h"

namespace quillon {

class ClassFactory final : public ComObject<IClassFactory> {
 public:
  // Returns a new object with one reference; it may throw, and CreateInstance then fails as a
  // member does.
  using Maker = std::function<IUnknown*()>;

  ClassFactory(ProcessLifetime& lifetime, const wchar_t* errorSource, Maker make);

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

 private:
  ProcessLifetime& lifetime_;
  const wchar_t* const errorSource_;
  const Maker make_;
  unsigned locks_ = 0;
};

}  // namespace quillon
