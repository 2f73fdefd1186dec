// A client that is compiled against the type library, as C++, Delphi and VB6 programs are.
//
//   EarlyBound           checks the server through its vtable
//   EarlyBound rounds    creates and releases 200 objects, and counts the server's handles
//   EarlyBound dialer    opens and closes a connection, or prints why there is no object
//
// Prints what went wrong, and "early: ok" when nothing did. Exit status 0 or 1.
#include <windows.h>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <ocidl.h>
#include <oleauto.h>
#include <string>
#include <string_view>
#include <tlhelp32.h>
#include <vector>
#include <winternl.h>

#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/SafeArray.h"
#include "platform/win32/Variant.h"
#include "quillon_h.h"

namespace {

using quillon::ArrayElements;
using quillon::Bstr;
using quillon::ComPtr;
using quillon::QueryFor;
using quillon::SafeArray;
using quillon::Utf8FromBstr;
using quillon::Variant;

bool& Failed() {
  static bool failed = false;
  return failed;
}

template <class Value>
void Expect(std::string_view what, const Value& expected, const Value& actual) {
  if (expected == actual) return;
  Failed() = true;
  std::cout << what << ": " << actual << " instead of " << expected << "\n";
}

void Expect(std::string_view what, HRESULT expected, HRESULT actual) {
  if (expected == actual) return;
  Failed() = true;
  std::cout << what << ": " << std::hex << actual << " instead of " << expected << std::dec << "\n";
}

template <class Interface = IServer>
ComPtr<Interface> Create(const wchar_t* progId = L"QuillonInterface.Server") {
  CLSID id = {};
  ComPtr<Interface> object;
  HRESULT result = CLSIDFromProgID(progId, &id);
  if (SUCCEEDED(result)) {
    result =
        CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(Interface), object.PutVoid());
  }
  if (FAILED(result)) {
    std::cout << "no object: " << std::hex << result << "\n";
    std::exit(1);
  }
  return object;
}

Variant Text(std::string_view text) {
  Variant variant;
  V_BSTR(&variant.Get()) = Bstr(text).Detach();
  V_VT(&variant.Get()) = VT_BSTR;
  return variant;
}

Variant Number(LONG number) {
  Variant variant;
  V_I4(&variant.Get()) = number;
  V_VT(&variant.Get()) = VT_I4;
  return variant;
}

std::string Subject(IServer* server) {
  Variant value;
  Expect("get subject", S_OK, server->get_subject(value.Put()));
  Expect<int>("type of subject", VT_BSTR, value.Type());
  return Utf8FromBstr(V_BSTR(&value.Get()));
}

LONG SmtpPort(IServer* server) {
  Variant value;
  Expect("get SMTPPort", S_OK, server->get_SMTPPort(value.Put()));
  VariantChangeType(&value.Get(), &value.Get(), 0, VT_I4);
  return V_I4(&value.Get());
}

void CheckTwoInstances() {
  const auto first = Create();
  Expect("put SMTPPort", S_OK, first->put_SMTPPort(Number(2525).Get()));
  const auto second = Create();  // puts the shared Internet settings back
  Expect("SMTPPort", 25L, SmtpPort(first.Get()));
  Expect("put subject", S_OK, first->put_subject(Text("shared gr\xC3\xBC\xC3\x9F").Get()));
  Expect("subject of the other", std::string("shared gr\xC3\xBC\xC3\x9F"), Subject(second.Get()));
  Expect("put loginName", S_OK, first->put_loginName(Text("joe").Get()));
  Variant name;
  Expect("get loginName", S_OK, second->get_loginName(name.Put()));
  Expect<UINT>("loginName of the other", 0, SysStringLen(V_BSTR(&name.Get())));
}

void CheckByReference() {
  const auto server = Create();
  server->NewMessage();
  Expect("AddRecipientTo", S_OK, server->AddRecipientTo(Bstr("a@x, b@x").Get()));
  SafeArray array;
  short count = 9;
  // The array of the first call is replaced by the second one's.
  for (int round = 0; round < 2; ++round) {
    Expect("GetMessageItems", S_OK, server->GetMessageItems(1, array.Place(), &count));
    Expect<int>("item count", 2, count);
    VARTYPE type = VT_EMPTY;
    SafeArrayGetVartype(array.Get(), &type);
    Expect<int>("array type", VT_BSTR, type);
    const ArrayElements<BSTR> items(array.Get());
    if (items.Get().size() == 2) {
      Expect("item", std::string("b@x"), Utf8FromBstr(items.Get()[1]));
    } else {
      Expect<std::size_t>("array size", 2, items.Get().size());
    }
  }
  short system = 5;
  LONG decoded = 77;
  LONG api = 88;
  Bstr message("old text");
  BSTR text = message.Detach();
  Expect("DecodeError", S_OK,
         server->DecodeError(static_cast<LONG>(0x80040203), &system, &decoded, &api, &text));
  Expect<int>("mail system", 0, system);
  Expect("decoded", 77L, decoded);
  Expect("API", 88L, api);
  Expect("message", std::string("No mail system was detected."), Utf8FromBstr(text));
  SysFreeString(text);
}

void CheckDialer() {
  const auto dialer = Create<IDialer>(L"QuillonInterface.Dialer");
  Expect("put EntryName", S_OK, dialer->put_EntryName(Bstr("Office").Get()));
  Expect("Dial", S_OK, dialer->Dial());
  Bstr entry;
  Expect("get ActiveEntryName", S_OK, dialer->get_ActiveEntryName(entry.Put()));
  Expect("ActiveEntryName", std::string("Office"), Utf8FromBstr(entry.Get()));
  Expect("HangUp", S_OK, dialer->HangUp());
  short available = 0;
  Expect("get DialerAvailable", S_OK, dialer->get_DialerAvailable(&available));
  Expect<int>("DialerAvailable", -1, available);
}

void CheckErrors() {
  const auto server = Create();
  const auto raised = [](DWORD number) { return static_cast<HRESULT>(number); };
  Expect("ErrorDisplay", raised(0x80040211), server->put_ErrorDisplay(Number(1).Get()));
  Expect("TimeoutConnect", raised(0x80040211), server->put_TimeoutConnect(Number(1999).Get()));
  Expect("ErrorDisplay", DISP_E_TYPEMISMATCH, server->put_ErrorDisplay(Text("maybe").Get()));
  Expect("AddXHeader", raised(0x80040221),
         server->AddXHeader(Bstr("Mailer").Get(), Bstr("mine").Get()));
  const auto errors = QueryFor<ISupportErrorInfo>(server.Get());
  Expect("error objects", S_OK,
         errors ? errors->InterfaceSupportsErrorInfo(__uuidof(IServer)) : E_NOINTERFACE);
}

void CheckCollection() {
  const auto server = Create();
  server->NewMessage();
  server->AddRecipientCc(Bstr("c@x,d@x").Get());
  ComPtr<IDispatch> list;
  Expect("MessageItems", S_OK, server->get_MessageItems(2, list.Put()));
  const auto items = QueryFor<IItems>(list.Get());
  LONG count = 0;
  Variant item;
  Expect("Count", S_OK, items->get_Count(&count));
  Expect("Count", 2L, count);
  Expect("Item", S_OK, items->get_Item(2, item.Put()));
  Expect("Item", std::string("d@x"), Utf8FromBstr(V_BSTR(&item.Get())));
  Expect("Item 3", DISP_E_BADINDEX, items->get_Item(3, item.Put()));
}

void CheckClassInfo() {
  const auto server = Create();
  const auto provider = QueryFor<IProvideClassInfo>(server.Get());
  ComPtr<ITypeInfo> info;
  Expect("GetClassInfo", S_OK, provider ? provider->GetClassInfo(info.Put()) : E_NOINTERFACE);
  TYPEATTR* attributes = nullptr;
  if (!info || FAILED(info->GetTypeAttr(&attributes))) return;
  Expect<int>("kind of class", TKIND_COCLASS, attributes->typekind);
  Expect("class", true, IsEqualGUID(attributes->guid, __uuidof(Server)) != FALSE);
  info->ReleaseTypeAttr(attributes);
}

void CheckAll() {
  const auto keep = Create();  // one process for all of it
  CheckTwoInstances();
  CheckByReference();
  CheckErrors();
  CheckCollection();
  CheckClassInfo();
}

DWORD ServerProcess() {
  const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  DWORD found = 0;
  for (BOOL more = Process32FirstW(processes, &entry); more != FALSE;
       more = Process32NextW(processes, &entry)) {
    if (lstrcmpiW(entry.szExeFile, L"quillon.exe") == 0) found = entry.th32ProcessID;
  }
  CloseHandle(processes);
  return found;
}

// From the system's table of all handles, which begins with their number.
std::size_t CountHandles(DWORD process) {
  constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
  struct Entry {
    ULONG owner;
    BYTE type;
    BYTE flags;
    USHORT handle;
    void* object;
    ULONG access;
  };
  struct Beginning {
    ULONG count;
    Entry first;
  };
  const auto query = reinterpret_cast<decltype(&NtQuerySystemInformation)>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
  std::vector<std::byte> table(1U << 20U);
  ULONG size = 0;
  if (query(kSystemHandleInformation, table.data(), static_cast<ULONG>(table.size()), &size) != 0) {
    return 0;
  }
  ULONG count = 0;
  std::memcpy(&count, table.data(), sizeof count);
  std::size_t owned = 0;
  for (ULONG i = 0; i < count; ++i) {
    Entry entry;
    std::memcpy(&entry, table.data() + offsetof(Beginning, first) + i * sizeof entry, sizeof entry);
    if (entry.owner == process) ++owned;
  }
  return owned;
}

std::size_t HandlesAfter(int rounds) {
  for (int round = 0; round < rounds; ++round) {
    const auto server = Create();
    ComPtr<IDispatch> items;
    Expect("put subject", S_OK, server->put_subject(Text("round").Get()));
    Expect("MessageItems", S_OK, server->get_MessageItems(1, items.Put()));
  }
  return CountHandles(ServerProcess());
}

void MakeRounds() {
  const auto keep = Create();
  const std::size_t early = HandlesAfter(50);  // what is made once is there now
  const std::size_t late = HandlesAfter(150);
  Expect("handles are counted", true, early > 0);
  std::cout << early << " handles after 50 rounds, " << late << " after 200\n";
  Expect("few more handles", true, late < early + 20);
}

}  // namespace

int main(int count, char** arguments) {
  const std::string mode = count > 1 ? arguments[1] : "";
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (mode == "rounds") {
    MakeRounds();
  } else if (mode == "dialer") {
    CheckDialer();
  } else {
    CheckAll();
  }
  CoUninitialize();
  if (!Failed()) std::cout << "early: ok" << std::endl;
  return Failed() ? 1 : 0;
}
