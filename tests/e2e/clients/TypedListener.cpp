// A compiled program whose notification object takes its arguments as they are declared, long and
// text by reference, and nothing else.
//
//   TypedListener SMTP_PORT SUBJECT    sends a message and prints each status and the end
//
// Exit status 1 when no end comes.
#include <windows.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <oleauto.h>
#include <string>
#include <string_view>

#include "OneMethod.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/Variant.h"
#include "quillon_h.h"

namespace {

using quillon::Bstr;
using quillon::ComPtr;
using quillon::Utf8FromBstr;
using quillon::Variant;

constexpr UINT kNumbers = 7;
constexpr LONG kProgress = 3;
constexpr LONG kEnd = 2;
constexpr DWORD kPatience = 30000;  // milliseconds

// It lives as long as the program, so references are not counted.
class Listener final : public OneMethod {
 public:
  Listener() : OneMethod(L"AsynchNotification") {}

  bool ended = false;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool known = id == IID_IUnknown || id == IID_IDispatch;
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO*, UINT* wrong) override {
    if (parameters->cArgs != kNumbers + 1) return DISP_E_BADPARAMCOUNT;
    std::array<LONG, kNumbers> numbers{};
    for (UINT i = 0; i <= kNumbers; ++i) {
      VARIANT& argument = parameters->rgvarg[kNumbers - i];  // the last one stands first
      if (V_VT(&argument) != (VT_BYREF | (i < kNumbers ? VT_I4 : VT_BSTR))) {
        *wrong = kNumbers - i;
        return DISP_E_TYPEMISMATCH;
      }
      if (i < kNumbers) numbers[i] = *V_I4REF(&argument);
    }
    const LONG kind = numbers[1];
    if (kind != kProgress) {
      std::printf("%ld %ld %ld %s\n", numbers[0], kind, numbers[5],
                  Utf8FromBstr(*V_BSTRREF(&parameters->rgvarg[0])).c_str());
    }
    ended = ended || kind == kEnd;
    if (result != nullptr) {
      V_VT(result) = VT_I4;
      V_I4(result) = 0;
    }
    return S_OK;
  }
};

Variant Text(std::string_view text) {
  Variant variant;
  V_BSTR(&variant.Get()) = Bstr(text).Detach();
  V_VT(&variant.Get()) = VT_BSTR;
  return variant;
}

HRESULT Send(IServer* server, Listener& listener, const char* port, const char* subject) {
  server->put_mailSystem(Text("10").Get());
  server->put_SMTPServer(Text("127.0.0.1").Get());
  server->put_SMTPPort(Text(port).Get());
  server->put_from(Text("ann@example.com").Get());
  server->NewMessage();
  server->AddRecipientTo(Bstr("bob@example.com").Get());
  server->put_subject(Text(subject).Get());
  const HRESULT registered = server->AsynchObjectRegister(&listener, 0, 1, Variant().Get());
  return FAILED(registered) ? registered : server->Send();
}

bool WaitForEnd(const Listener& listener) {
  const ULONGLONG deadline = GetTickCount64() + kPatience;
  while (!listener.ended && GetTickCount64() < deadline) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
    for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0;) {
      DispatchMessageW(&message);
    }
  }
  return listener.ended;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  Listener listener;
  bool ended = false;
  {
    CLSID id = {};
    CLSIDFromProgID(L"QuillonInterface.Server", &id);
    ComPtr<IServer> server;
    HRESULT result =
        CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IServer), server.PutVoid());
    if (SUCCEEDED(result)) result = Send(server.Get(), listener, arguments[1], arguments[2]);
    if (FAILED(result)) std::printf("failed: %08lx\n", static_cast<unsigned long>(result));
    ended = SUCCEEDED(result) && WaitForEnd(listener);
  }
  CoUninitialize();
  return ended ? 0 : 1;
}
