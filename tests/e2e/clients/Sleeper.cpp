// An object "QuillonTest.Sleeper" whose method Sleep(milliseconds) keeps its caller waiting, in a
// process of its own: meanwhile calls reach the caller, as during WScript.Sleep of Windows, which
// Wine does not have. Started with /register it registers itself, by COM it serves one object.
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <string>

#include "OneMethod.h"

namespace {

constexpr GUID kClass = {
    0x6d8f1a3e, 0x52c7, 0x4b0e, {0x9a, 0x61, 0x3f, 0x70, 0xc2, 0x15, 0x88, 0xd4}};
constexpr const wchar_t* kClassText = L"{6D8F1A3E-52C7-4B0E-9A61-3F70C21588D4}";

// One for the life of the process: references are not counted, but the last object ends it.
class Sleeper final : public OneMethod {
 public:
  Sleeper() : OneMethod(L"Sleep") {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool known = id == IID_IUnknown || id == IID_IDispatch;
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    if (--references_ == 0) PostQuitMessage(0);
    return references_;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                                   EXCEPINFO*, UINT*) override {
    if (parameters->cArgs != 1) return DISP_E_BADPARAMCOUNT;
    VARIANT milliseconds{};
    const HRESULT result = VariantChangeType(&milliseconds, &parameters->rgvarg[0], 0, VT_I4);
    if (SUCCEEDED(result)) ::Sleep(static_cast<DWORD>(V_I4(&milliseconds)));
    return result;
  }

 private:
  ULONG references_ = 0;
};

Sleeper& TheSleeper() {
  static Sleeper sleeper;
  return sleeper;
}

class Factory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool known = id == IID_IUnknown || id == IID_IClassFactory;
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
    return TheSleeper().QueryInterface(id, object);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

bool SetText(const std::wstring& key, const std::wstring& text) {
  return RegSetValueW(HKEY_CLASSES_ROOT, key.c_str(), REG_SZ, text.c_str(), 0) == ERROR_SUCCESS;
}

int Register() {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const bool done = SetText(L"QuillonTest.Sleeper\\CLSID", kClassText) &&
                    SetText(std::wstring(L"CLSID\\") + kClassText + L"\\LocalServer32", path);
  return done ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count > 1 && std::string(arguments[1]) == "/register") return Register();
  Factory factory;
  DWORD cookie = 0;
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) ||
      FAILED(CoRegisterClassObject(kClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                   &cookie))) {
    return 1;
  }
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  CoRevokeClassObject(cookie);
  CoUninitialize();
  return 0;
}
