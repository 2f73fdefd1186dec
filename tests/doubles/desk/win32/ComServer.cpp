#include "desk/win32/ComServer.h"

#include <array>
#include <exception>
#include <new>
#include <string>

#include "desk/win32/DispatchObject.h"
#include "platform/win32/RegistryKey.h"

namespace desk {
namespace {

class Factory final : public IClassFactory {
 public:
  explicit Factory(const ServedClass& served) : served_(served) {}

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
      return served_.create(iid, object);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    } catch (const std::exception&) {
      return E_FAIL;
    }
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    LiveObjects() += lock != FALSE ? 1 : -1;
    return S_OK;
  }

 private:
  const ServedClass& served_;
};

std::wstring ClassText(const ServedClass& served) {
  std::array<wchar_t, 40> text{};
  StringFromGUID2(served.id, text.data(), static_cast<int>(text.size()));
  return text.data();
}
std::wstring ProgIdKey(const ServedClass& served) {
  return std::wstring(L"Software\\Classes\\") + served.progId;
}
std::wstring ClassKey(const ServedClass& served) {
  return L"Software\\Classes\\CLSID\\" + ClassText(served);
}

HRESULT SetText(const std::wstring& path, const wchar_t* name, const std::wstring& text) {
  quillon::RegistryKey key;
  LSTATUS status = key.Create(HKEY_LOCAL_MACHINE, path);
  if (status == ERROR_SUCCESS) status = key.SetText(name, text);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

}  // namespace

HRESULT GetClassObject(const ServedClass& served, REFCLSID wanted, REFIID iid, void** object) {
  static Factory factory(served);
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (wanted != served.id) return CLASS_E_CLASSNOTAVAILABLE;
  return factory.QueryInterface(iid, object);
}

HRESULT CanUnloadNow() {
  return LiveObjects() == 0 ? S_OK : S_FALSE;
}

HRESULT Register(const ServedClass& served) {
  HMODULE module = nullptr;
  if (GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          served.title, &module) == FALSE) {
    return E_FAIL;
  }
  std::array<wchar_t, MAX_PATH> path{};
  const DWORD length = GetModuleFileNameW(module, path.data(), MAX_PATH);
  if (length == 0 || length == MAX_PATH) return E_FAIL;
  const std::wstring key = ClassKey(served);
  const std::wstring server = key + L"\\InprocServer32";
  HRESULT result = SetText(ProgIdKey(served) + L"\\CLSID", nullptr, ClassText(served));
  if (SUCCEEDED(result)) result = SetText(key, nullptr, served.title);
  if (SUCCEEDED(result)) result = SetText(server, nullptr, path.data());
  if (SUCCEEDED(result)) result = SetText(server, L"ThreadingModel", L"Apartment");
  return result;
}

HRESULT Unregister(const ServedClass& served) {
  for (const std::wstring& path : {ProgIdKey(served), ClassKey(served)}) {
    const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, path.c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
      return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    }
  }
  return S_OK;
}

}  // namespace desk
