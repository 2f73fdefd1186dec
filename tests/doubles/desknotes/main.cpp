// The in-process server of "Notes.NotesSession".
#include "desk/win32/ComServer.h"
#include "desknotes/Session.h"

namespace {

constexpr desk::ServedClass kSession{
    {0x6c0a51f2, 0x2b7e, 0x4d0b, {0xa4, 0x4f, 0x1d, 0x93, 0x0c, 0x57, 0xe8, 0x21}},
    L"Notes.NotesSession",
    L"Desk Notes session",
    [](REFIID iid, void** object) {
      return desk::Make<desk::SessionObject>()->QueryInterface(iid, object);
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
