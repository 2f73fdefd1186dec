#include "automation/ClassObjects.h"

#include <combaseapi.h>
#include <utility>

#include "automation/ComCall.h"
#include "platform/win32/ComPtr.h"

namespace quillon {

void ClassObjects::Add(const PublicClass& described, ProcessLifetime& lifetime,
                       ClassFactory::Maker make) {
  const auto factory = ComPtr<IClassFactory>::Attach(
      new ClassFactory(lifetime, described.errorSource, std::move(make)));
  cookies_.reserve(cookies_.size() + 1);
  DWORD cookie = 0;
  ThrowIfFailed(CoRegisterClassObject(described.id, factory.Get(), CLSCTX_LOCAL_SERVER,
                                      REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED, &cookie));
  cookies_.push_back(cookie);
  // Who has been told where it is may come behind Revoke. Until the apartment goes it is there.
  ThrowIfFailed(CoLockObjectExternal(factory.Get(), TRUE, FALSE));
}

void ClassObjects::Revoke() noexcept {
  for (const DWORD cookie : std::exchange(cookies_, {})) CoRevokeClassObject(cookie);
}

}  // namespace quillon
