// The in-process server of "MAPI.Session".
#include <windows.h>
#include <array>
#include <new>
#include <objbase.h>
#include <string>

#include "olemsg32/Session.h"
#include "platform/win32/RegistryKey.h"

namespace {

// Published: clients find the class by it.
constexpr CLSID kSessionClass = {
    0x3FA7DEB3, 0x6438, 0x101B, {0xAC, 0xC1, 0x00, 0xAA, 0x00, 0x42, 0x33, 0x26}};
constexpr wchar_t kProgIdKey[] = L"Software\\Classes\\MAPI.Session";
constexpr wchar_t kClassKey[] = L"Software\\Classes\\CLSID\\{3FA7DEB3-6438-101B-ACC1-00AA00423326}";

class Factory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
    return *object == nullptr ? E_NOINTERFACE : S_OK;
  }
  // It lives as long as the library, which does not count it.
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    try {
      return desk::Make<desk::Session>()->QueryInterface(iid, object);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    }
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    desk::LiveObjects() += lock != FALSE ? 1 : -1;
    return S_OK;
  }
};

HRESULT SetText(const std::wstring& path, const wchar_t* name, const std::wstring& text) {
  quillon::RegistryKey key;
  LSTATUS status = key.Create(HKEY_LOCAL_MACHINE, path);
  if (status == ERROR_SUCCESS) status = key.SetText(name, text);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

}  // namespace

extern "C" {

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID wanted, REFIID iid, LPVOID* object) {
  static Factory factory;
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (wanted != kSessionClass) return CLASS_E_CLASSNOTAVAILABLE;
  return factory.QueryInterface(iid, object);
}

HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  return desk::LiveObjects() == 0 ? S_OK : S_FALSE;
}

HRESULT STDAPICALLTYPE DllRegisterServer() {
  HMODULE module = nullptr;
  if (GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          kClassKey, &module) == FALSE) {
    return E_FAIL;
  }
  std::array<wchar_t, MAX_PATH> path{};
  const DWORD length = GetModuleFileNameW(module, path.data(), MAX_PATH);
  if (length == 0 || length == MAX_PATH) return E_FAIL;
  const std::wstring server = std::wstring(kClassKey) + L"\\InprocServer32";
  HRESULT result = SetText(std::wstring(kProgIdKey) + L"\\CLSID", nullptr,
                           L"{3FA7DEB3-6438-101B-ACC1-00AA00423326}");
  if (SUCCEEDED(result)) result = SetText(kClassKey, nullptr, L"Desk session");
  if (SUCCEEDED(result)) result = SetText(server, nullptr, path.data());
  if (SUCCEEDED(result)) result = SetText(server, L"ThreadingModel", L"Apartment");
  return result;
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
  for (const wchar_t* path : {kProgIdKey, kClassKey}) {
    const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, path);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
      return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    }
  }
  return S_OK;
}

}  // extern "C"
