// An in-process server of one class: what its library exports.
#pragma once

#include <windows.h>
#include <objbase.h>

namespace desk {

struct ServedClass {
  CLSID id;
  const wchar_t* progId;
  const wchar_t* title;
  HRESULT (*create)(REFIID iid, void** object);
};

HRESULT GetClassObject(const ServedClass& served, REFCLSID wanted, REFIID iid, void** object);
HRESULT CanUnloadNow();
// Per machine.
HRESULT Register(const ServedClass& served);
HRESULT Unregister(const ServedClass& served);

}  // namespace desk
