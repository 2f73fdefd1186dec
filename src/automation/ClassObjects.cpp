#include "automation/ClassObjects.h"

#include <combaseapi.h>
#include <utility>

#include "automation/ComCall.h"
#include "platform/win32/ComPtr.h"

namespace quillon {

void ClassObjects::Add(const PublicClass& described, ProcessLifetime& lifetime,
                       ClassFactory::Maker make) {
  const bool one = clients_ == Clients::One;
  const auto factory = ComPtr<IClassFactory>::Attach(new ClassFactory(
      lifetime, described.errorSource, one ? ForOneClient(std::move(make)) : std::move(make)));
  cookies_.reserve(cookies_.size() + 1);
  DWORD cookie = 0;
  ThrowIfFailed(CoRegisterClassObject(
      described.id, factory.Get(), CLSCTX_LOCAL_SERVER,
      (one ? REGCLS_SINGLEUSE : REGCLS_MULTIPLEUSE) | REGCLS_SUSPENDED, &cookie));
  cookies_.push_back(cookie);
  // Who has been told where it is may come behind Revoke. Until the apartment goes it is there.
  ThrowIfFailed(CoLockObjectExternal(factory.Get(), TRUE, FALSE));
}

// COM gives a class object to one client, but another class of the same process to the next.
ClassFactory::Maker ClassObjects::ForOneClient(ClassFactory::Maker make) {
  return [this, make = std::move(make), mine = cookies_.size()] {
    if (taken_.value_or(mine) != mine) throw HresultError(CO_E_SERVER_STOPPING);
    IUnknown* const made = make();
    taken_ = mine;
    Revoke();
    return made;
  };
}

void ClassObjects::Revoke() noexcept {
  for (const DWORD cookie : std::exchange(cookies_, {})) CoRevokeClassObject(cookie);
}

}  // namespace quillon
