// The in-process server of "MAPI.Session".
#include "desk/win32/ComServer.h"
#include "olemsg32/Session.h"

namespace {

constexpr desk::ServedClass kSession{
    // Published: clients find the class by it.
    {0x3FA7DEB3, 0x6438, 0x101B, {0xAC, 0xC1, 0x00, 0xAA, 0x00, 0x42, 0x33, 0x26}},
    L"MAPI.Session",
    L"Desk session",
    [](REFIID iid, void** object) {
      return desk::Make<desk::Session>()->QueryInterface(iid, object);
    },
};

}  // namespace

extern "C" {

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID wanted, REFIID iid, LPVOID* object) {
  return desk::GetClassObject(kSession, wanted, iid, object);
}

HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  return desk::CanUnloadNow();
}

HRESULT STDAPICALLTYPE DllRegisterServer() {
  return desk::Register(kSession);
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
  return desk::Unregister(kSession);
}

}  // extern "C"
