// A client of the desk that is no script: what scripts cannot do with "MAPI.Session", and
// mapirtf.dll. It shares no declaration with the desk.
//
//   DeskCaller            checks "MAPI.Session"
//   DeskCaller rich TEXT  stores TEXT as the rich text of a new message in ann's Outbox
//
// Prints what went wrong, and "desk: ok" when nothing did. Exit status 0 or 1.
#include <windows.h>
#include <iostream>
#include <oleauto.h>
#include <string>
#include <string_view>
#include <vector>

#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/Variant.h"

namespace {

using quillon::Bstr;
using quillon::ComPtr;
using quillon::Variant;

bool& HasFailed() {
  static bool failed = false;
  return failed;
}

void Expect(std::string_view what, HRESULT expected, HRESULT actual) {
  if (expected == actual) return;
  HasFailed() = true;
  std::cout << what << ": " << std::hex << actual << " instead of " << expected << std::dec << "\n";
}

Variant Text(std::string_view text) {
  Variant value;
  V_BSTR(&value.Get()) = Bstr(text).Detach();
  V_VT(&value.Get()) = VT_BSTR;
  return value;
}

Variant Number(long number) {
  Variant value;
  V_I4(&value.Get()) = number;
  V_VT(&value.Get()) = VT_I4;
  return value;
}

struct Named {
  const wchar_t* name;
  Variant value;
};

// One call by name, with its arguments from the first to the last, those by name behind the others.
struct Call {
  HRESULT result = E_FAIL;  // the number of the error record where there is one
  Variant value;
  std::string text;  // of the error record
  UINT argument = 99;

  Call(IDispatch* object, const wchar_t* name, const std::vector<Variant>& positional = {},
       const std::vector<Named>& named = {}, WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
    std::vector<LPOLESTR> names{const_cast<LPOLESTR>(name)};
    for (const Named& each : named) names.push_back(const_cast<LPOLESTR>(each.name));
    std::vector<DISPID> ids(names.size());
    result = object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()), 0,
                                   ids.data());
    if (FAILED(result)) return;
    std::vector<VARIANT> values;
    values.reserve(named.size() + positional.size());
    for (const Named& each : named) values.push_back(each.value.Get());
    for (auto each = positional.rbegin(); each != positional.rend(); ++each) {
      values.push_back(each->Get());
    }
    DISPPARAMS given = {values.data(), ids.data() + 1, static_cast<UINT>(values.size()),
                        static_cast<UINT>(named.size())};
    Run(object, ids[0], flags, given);
  }

  ComPtr<IDispatch> Object() const {
    if (value.Type() == VT_DISPATCH) return ComPtr<IDispatch>(V_DISPATCH(&value.Get()));
    return {};
  }
  std::string String() const {
    return value.Type() == VT_BSTR ? quillon::Utf8FromBstr(V_BSTR(&value.Get())) : "(no text)";
  }

 private:
  void Run(IDispatch* object, DISPID id, WORD flags, DISPPARAMS& given) {
    EXCEPINFO exception = {};
    result = object->Invoke(id, IID_NULL, 0, flags, &given, value.Put(), &exception, &argument);
    if (result != DISP_E_EXCEPTION) return;
    result = exception.scode;
    text = quillon::Utf8FromBstr(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
  }
};

template <class... Values>
std::vector<Variant> List(Values&&... values) {
  std::vector<Variant> list;
  (list.push_back(std::forward<Values>(values)), ...);
  return list;
}

template <class... Names>
std::vector<Named> ByName(Names&&... names) {
  std::vector<Named> list;
  (list.push_back(std::forward<Names>(names)), ...);
  return list;
}

ComPtr<IDispatch> NewSession() {
  CLSID id = {};
  ComPtr<IDispatch> session;
  Expect("class", S_OK, CLSIDFromProgID(L"MAPI.Session", &id));
  Expect("create", S_OK,
         CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, session.PutVoid()));
  return session;
}

ComPtr<IDispatch> LoggedOn() {
  ComPtr<IDispatch> session = NewSession();
  Expect("log on", S_OK,
         Call(session.Get(), L"Logon", List(),
              ByName(Named{L"profilePassword", Text("secret")}, Named{L"PROFILENAME", Text("ann")},
                     Named{L"showDialog", Number(0)}))
             .result);
  return session;
}

ComPtr<IDispatch> NewMessage(IDispatch* session) {
  const Call outbox(session, L"Outbox");
  const Call messages(outbox.Object().Get(), L"Messages");
  return Call(messages.Object().Get(), L"Add", List(Text("by position")),
              ByName(Named{L"Importance", Number(2)}))
      .Object();
}

void CheckArguments() {
  const ComPtr<IDispatch> session = LoggedOn();
  const ComPtr<IDispatch> message = NewMessage(session.Get());
  const Call importance(message.Get(), L"importance");
  Expect("by name", 2, V_I4(&importance.value.Get()));
  const Call recipients(message.Get(), L"Recipients");
  const ComPtr<IDispatch> list = recipients.Object();
  Expect("unknown name", DISP_E_UNKNOWNNAME,
         Call(list.Get(), L"Add", List(), ByName(Named{L"Nome", Text("x")})).result);
  Expect("twice", DISP_E_PARAMNOTFOUND,
         Call(list.Get(), L"Add", List(Text("x")), ByName(Named{L"Name", Text("x")})).result);
  Expect("too many", DISP_E_BADPARAMCOUNT,
         Call(list.Get(), L"Add", List(Text("x"), Text(""), Number(1), Text(""), Text(""))).result);
  const Call wrong(list.Get(), L"Add", List(Text("x"), Text("y"), Text("one")));
  Expect("wrong type", DISP_E_TYPEMISMATCH, wrong.result);
  Expect("which one", 0, static_cast<HRESULT>(wrong.argument));  // the last stands first
  Expect("left out", DISP_E_PARAMNOTOPTIONAL, Call(list.Get(), L"Item").result);
  Expect("no member", DISP_E_UNKNOWNNAME, Call(list.Get(), L"Remove").result);
  Expect("none was added", 0, V_I4(&Call(list.Get(), L"Count").value.Get()));
  Expect("read only", DISP_E_MEMBERNOTFOUND,
         Call(list.Get(), L"Count", List(Number(1)), {}, DISPATCH_PROPERTYPUT).result);

  VARIANT inner = {};
  V_VT(&inner) = VT_I4;
  V_I4(&inner) = 3;
  Variant reference;
  V_VT(&reference.Get()) = VT_BYREF | VT_VARIANT;
  V_VARIANTREF(&reference.Get()) = &inner;
  const Call added(list.Get(), L"Add", List(Text("bob"), Text("")),
                   ByName(Named{L"Type", std::move(reference)}));
  Expect("by reference", 3, V_I4(&Call(added.Object().Get(), L"Type").value.Get()));
  const Call number(list.Get(), L"Item", List(Text("joe")));
  Expect("error record", static_cast<HRESULT>(0x8004010F), number.result);
  if (number.text != "MAPI_E_NOT_FOUND") Expect(number.text, 0, 1);
}

// An object outlives those it came from, and the library stays as long as it is needed.
void CheckLifetime() {
  const HMODULE library = GetModuleHandleW(L"olemsg32.dll");
  const auto canUnload = reinterpret_cast<HRESULT(WINAPI*)()>(
      reinterpret_cast<void*>(GetProcAddress(library, "DllCanUnloadNow")));
  if (canUnload == nullptr) return Expect("library", S_OK, E_NOINTERFACE);
  {
    ComPtr<IDispatch> session = LoggedOn();
    ComPtr<IDispatch> recipient;
    {
      const ComPtr<IDispatch> message = NewMessage(session.Get());
      const ComPtr<IDispatch> list = Call(message.Get(), L"Recipients").Object();
      recipient = Call(list.Get(), L"Add", List(Text("bob"))).Object();
      const ComPtr<IDispatch> fields = Call(message.Get(), L"Fields").Object();
      Expect("field", S_OK, Call(fields.Get(), L"Add", List(Text("a"), Number(8))).result);
      const ComPtr<IDispatch> again = Call(list.Get(), L"Session").Object();
      Expect("stores", S_OK, Call(again.Get(), L"InfoStores").result);
    }
    session = {};
    Expect("alone", S_OK, Call(recipient.Get(), L"Resolve").result);
    const Call name(Call(recipient.Get(), L"Session").Object().Get(), L"Name");
    if (name.String() != "ann") Expect(name.String(), 0, 1);
    Expect("in use", S_FALSE, canUnload());
  }
  Expect("nothing left", S_OK, canUnload());
}

void StoreRichText(const char* text) {
  using WriteRtf = int(__stdcall*)(char*, char*, char*, char*);
  const HMODULE library = LoadLibraryW(L"mapirtf.dll");
  const auto write =
      reinterpret_cast<WriteRtf>(reinterpret_cast<void*>(GetProcAddress(library, "writertf")));
  if (write == nullptr) return Expect("writertf", S_OK, E_NOINTERFACE);
  const ComPtr<IDispatch> session = LoggedOn();
  const ComPtr<IDispatch> message = NewMessage(session.Get());
  Expect("first update", S_OK, Call(message.Get(), L"Update").result);
  std::string id = Call(message.Get(), L"ID").String();
  std::string store = Call(message.Get(), L"StoreID").String();
  std::string body = text;
  std::string ann = "ann";
  std::string nobody = "nobody";
  Expect("no account", 1, write(nobody.data(), id.data(), store.data(), body.data()));
  Expect("no message", 2, write(ann.data(), store.data(), store.data(), body.data()));
  Expect("no rich text", 4, write(ann.data(), id.data(), store.data(), id.data()));
  Expect("nothing at all", 4, write(nullptr, nullptr, nullptr, nullptr));
  Expect("stored", 0, write(ann.data(), id.data(), store.data(), body.data()));
  Expect("update", S_OK, Call(message.Get(), L"Update").result);  // it knows nothing of the text
}

}  // namespace

int main(int argc, char** argv) {
  CoInitialize(nullptr);
  if (argc == 3 && argv[1] == std::string_view("rich")) {
    StoreRichText(argv[2]);
  } else {
    CheckArguments();
    CheckLifetime();
  }
  CoUninitialize();
  if (!HasFailed()) std::cout << "desk: ok\n";
  return HasFailed() ? 1 : 0;
}
