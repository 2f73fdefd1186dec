// What a property call costs through the registered server, beside the same call on an empty
// automation object in a process of its own, and how long each process takes to be there.
//
// The program is the peer's server too: it registers itself for the run, and COM starts it with
// -Embedding.
#include <windows.h>
#include <cstdio>
#include <cstdlib>
#include <objbase.h>
#include <string>
#include <string_view>

#include "bench/support/EmptyServer.h"
#include "bench/support/Table.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/RegistryKey.h"
#include "platform/win32/Variant.h"

namespace quillon::bench {
namespace {

constexpr CLSID kPeerClass = {
    0x03d6a5b3, 0xba55, 0x4845, {0x99, 0xf5, 0x5e, 0x20, 0x89, 0x8e, 0x4a, 0xa4}};
constexpr wchar_t kPeerKey[] =
    L"Software\\Classes\\CLSID\\{03D6A5B3-BA55-4845-99F5-5E20898E4AA4}\\LocalServer32";
constexpr wchar_t kClasses[] = L"Software\\Classes\\CLSID";
constexpr char kPeer[] = "an empty object";
constexpr int kRounds = 151;
constexpr int kCallsPerRound = 20;  // each a put and a get
constexpr int kActivations = 5;
constexpr DWORD kUntilGone = 2000;  // milliseconds a server needs to end

void Require(HRESULT result, const char* what) {
  if (SUCCEEDED(result)) return;
  std::printf("%s: %lx\n", what, static_cast<unsigned long>(result));
  std::exit(1);
}

class PeerFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override {
    return (new EmptyServer)->QueryInterface(iid, object);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

int ServeAsPeer() {
  PeerFactory factory;
  DWORD cookie = 0;
  Require(
      CoRegisterClassObject(kPeerClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie),
      "CoRegisterClassObject");
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  CoRevokeClassObject(cookie);
  return 0;
}

ComPtr<IServer> Create(const CLSID& id) {
  ComPtr<IServer> server;
  Require(CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IServer), server.PutVoid()),
          "CoCreateInstance");
  return server;
}

// As a compiled program calls.
void CallEarly(IServer* server, const VARIANT& text) {
  Variant back;
  Require(server->put_subject(text), "put_subject");
  Require(server->get_subject(back.Put()), "get_subject");
}

// As a script calls: by name, each time.
void CallLate(IServer* server, const VARIANT& text) {
  wchar_t name[] = L"subject";
  wchar_t* names[] = {name};
  DISPID id = 0;
  DISPID put = DISPID_PROPERTYPUT;
  VARIANT argument = text;
  DISPPARAMS given = {&argument, &put, 1, 1};
  DISPPARAMS none = {};
  Variant back;
  Require(server->GetIDsOfNames(IID_NULL, names, 1, 0, &id), "GetIDsOfNames");
  Require(server->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYPUT, &given, nullptr, nullptr, nullptr),
          "Invoke put");
  Require(server->GetIDsOfNames(IID_NULL, names, 1, 0, &id), "GetIDsOfNames");
  Require(
      server->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, back.Put(), nullptr, nullptr),
      "Invoke get");
}

using Call = void (*)(IServer*, const VARIANT&);

void CompareCalls(const CLSID& product, const char* name, Call call) {
  const auto ours = Create(product);
  const auto peer = Create(kPeerClass);
  Variant text;
  V_BSTR(&text.Get()) = Bstr("A subject of ordinary length").Detach();
  V_VT(&text.Get()) = VT_BSTR;
  const auto side = [&](IServer* server) {
    return [&text, call, server] {
      const double seconds = Seconds([&] {
        for (int i = 0; i < kCallsPerRound; ++i) call(server, text.Get());
      });
      return seconds * 1e6 / kCallsPerRound;
    };
  };
  PrintRow(name, kPeer, Compare(kRounds, side(ours.Get()), side(peer.Get())), " us", "<= 1.15");
}

void CompareActivation(const CLSID& product) {
  const auto side = [](const CLSID& id) {
    return [&id] {
      Sleep(kUntilGone);
      return Seconds([&] { Create(id); }) * 1e3;
    };
  };
  PrintRow("process started, object made", kPeer,
           Compare(kActivations, side(product), side(kPeerClass)), " ms", "");
}

int CompareAll() {
  CLSID product = {};
  Require(CLSIDFromProgID(L"QuillonInterface.Server", &product), "the server is not registered");
  wchar_t program[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  {
    RegistryKey key;
    key.Create(HKEY_LOCAL_MACHINE, kPeerKey);
    key.SetText(nullptr, L"\"" + std::wstring(program) + L"\"");
  }
  CompareCalls(product, "property put and get, early bound", CallEarly);
  CompareCalls(product, "property put and get, late bound", CallLate);
  CompareActivation(product);
  {
    RegistryKey key;
    key.Open(HKEY_LOCAL_MACHINE, kPeerKey);
    key.DeleteValue(nullptr);
  }
  return RegistryKey::DeleteEmpty(HKEY_LOCAL_MACHINE, kPeerKey, kClasses) == ERROR_SUCCESS ? 0 : 1;
}

}  // namespace
}  // namespace quillon::bench

int main(int count, char** arguments) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const bool peer = count > 1 && std::string_view(arguments[1]) == "-Embedding";
  const int status = peer ? quillon::bench::ServeAsPeer() : quillon::bench::CompareAll();
  CoUninitialize();
  return status;
}
