#include "desk/win32/DispatchObject.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <new>
#include <vector>

#include "core/Text.h"
#include "desk/win32/Enumerator.h"
#include "desk/win32/TheStore.h"
#include "platform/win32/Bstr.h"

namespace desk {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr std::string_view kSecret = "Password";

// Asked for by a face itself, to know its own objects from a client's.
constexpr GUID kOwnObject = {
    0x0b1c6f3e, 0x7f57, 0x4c0a, {0x93, 0x1d, 0x5e, 0x6a, 0x21, 0x8c, 0x44, 0xd0}};

struct Parameters {
  std::vector<std::string> names;
  std::size_t required = 0;
};

Parameters ParametersOf(const MemberFacts& member) {
  Parameters parameters;
  for (std::string& word : quillon::Split(member.parameters, " ")) {
    if (word == "|") {
      parameters.required = parameters.names.size();
    } else if (!word.empty()) {
      parameters.names.push_back(std::move(word));
    }
  }
  return parameters;
}

void FillException(EXCEPINFO* exception, std::string_view source, HRESULT number,
                   std::string_view text) {
  if (exception == nullptr) return;
  *exception = {};
  exception->scode = number;
  exception->bstrSource = quillon::Bstr(source).Detach();
  exception->bstrDescription = quillon::Bstr(text).Detach();
}

}  // namespace

std::atomic<long>& LiveObjects() {
  static std::atomic<long> count{0};
  return count;
}

DispatchObject::DispatchObject() {
  ++LiveObjects();
}

DispatchObject::~DispatchObject() {
  --LiveObjects();
}

DispatchObject* DispatchObject::In(const VARIANT& value) {
  const Variant copy = CopyOf(value);
  if (copy.Type() != VT_DISPATCH || V_DISPATCH(&copy.Get()) == nullptr) return nullptr;
  void* found = nullptr;
  if (FAILED(V_DISPATCH(&copy.Get())->QueryInterface(kOwnObject, &found))) return nullptr;
  auto* object = static_cast<DispatchObject*>(found);
  object->Release();  // the caller's value keeps it
  return object;
}

HRESULT STDMETHODCALLTYPE DispatchObject::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (iid == IID_IUnknown || iid == IID_IDispatch || iid == kOwnObject) *object = this;
  if (*object == nullptr) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE DispatchObject::AddRef() {
  return ++references_;
}

ULONG STDMETHODCALLTYPE DispatchObject::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT STDMETHODCALLTYPE DispatchObject::GetTypeInfoCount(UINT* count) {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE DispatchObject::GetTypeInfo(UINT /*index*/, LCID /*locale*/,
                                                      ITypeInfo** info) {
  if (info != nullptr) *info = nullptr;
  return E_NOTIMPL;
}

const MemberFacts& DispatchObject::FactsOf(std::size_t index) const {
  return index < MemberCount() ? Member(index) : CommonMembers()[index - MemberCount()];
}

std::size_t DispatchObject::IndexOf(std::string_view name) const {
  for (std::size_t i = 0; i < MemberCount() + CommonMembers().size(); ++i) {
    if (quillon::EqualsIgnoreCase(FactsOf(i).name, name)) return i;
  }
  return kNone;
}

std::size_t DispatchObject::IndexOf(DISPID id) const {
  if (id == DISPID_VALUE) return IndexOf(DefaultMember());
  for (std::size_t i = 0; i < MemberCount() + CommonMembers().size(); ++i) {
    if (FactsOf(i).id == id) return i;
  }
  return kNone;
}

HRESULT STDMETHODCALLTYPE DispatchObject::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count,
                                                        LCID /*locale*/, DISPID* ids) {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
  std::fill_n(ids, count, DISPID_UNKNOWN);
  try {
    const std::string asked = quillon::Utf8FromWide(names[0]);
    std::size_t member = IndexOf(asked);
    if (member == kNone) {
      Learn(asked);
      member = IndexOf(asked);
    }
    if (member == kNone) return DISP_E_UNKNOWNNAME;
    ids[0] = FactsOf(member).id;
    const Parameters parameters = ParametersOf(FactsOf(member));
    HRESULT result = S_OK;
    for (UINT i = 1; i < count; ++i) {
      const std::string wanted = quillon::Utf8FromWide(names[i]);
      const auto found = std::ranges::find_if(parameters.names, [&](const std::string& name) {
        return quillon::EqualsIgnoreCase(name, wanted);
      });
      if (found == parameters.names.end()) {
        result = DISP_E_UNKNOWNNAME;
      } else {
        ids[i] = static_cast<DISPID>(found - parameters.names.begin());
      }
    }
    return result;
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT STDMETHODCALLTYPE DispatchObject::Invoke(DISPID id, REFIID iid, LCID /*locale*/, WORD flags,
                                                 DISPPARAMS* arguments, VARIANT* result,
                                                 EXCEPINFO* exception, UINT* argumentError) {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (arguments == nullptr) return E_POINTER;
  if (result != nullptr) VariantInit(result);
  const ComPtr<IDispatch> stay(this);
  try {
    return Run(id, flags, *arguments, result);
  } catch (const CallError& e) {
    if (argumentError != nullptr) *argumentError = e.Argument();
    return e.Number();
  } catch (const MemberError& e) {
    FillException(exception, Face().source, e.Number(), e.what());
    return DISP_E_EXCEPTION;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& e) {
    // The store cannot be read or written.
    FillException(exception, Face().source, Face().storeFailure, e.what());
    return DISP_E_EXCEPTION;
  }
}

// What "For Each" asks a collection for.
Variant DispatchObject::AllItems() {
  const std::size_t count = IndexOf("Count");
  const std::size_t item = IndexOf("Item");
  if (count == kNone || item == kNone) throw CallError(DISP_E_MEMBERNOTFOUND);
  if (!EnterCall(std::string(ClassName()) + "._NewEnum", "", Face().failWith)) return Nothing();
  const std::scoped_lock oneAtATime(StoreMutex());
  CheckUsable();
  const std::size_t parameters = ParametersOf(FactsOf(item)).names.size();
  std::vector<Variant> items;
  const long last = NumberOf(Read(count, Arguments({}, 0, 0, false)).Get());
  for (long number = 1; number <= last; ++number) {
    Variant place = FromNumber(number);
    const DISPPARAMS given = {&place.Get(), nullptr, 1, 0};
    items.push_back(Read(item, Arguments(given, parameters, 1, false)));
  }
  Variant all;
  V_UNKNOWN(&all.Get()) = Enumerate(std::move(items)).Detach();
  V_VT(&all.Get()) = VT_UNKNOWN;
  return all;
}

HRESULT DispatchObject::Run(DISPID id, WORD flags, const DISPPARAMS& given, VARIANT* result) {
  if (id == DISPID_NEWENUM) {
    Variant all = AllItems();
    if (result != nullptr) *result = all.Detach();
    return S_OK;
  }
  const std::size_t index = IndexOf(id);
  if (index == kNone) return DISP_E_MEMBERNOTFOUND;
  if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
    if (!FactsOf(index).writable) return DISP_E_MEMBERNOTFOUND;
    Put(index, given);
    return S_OK;
  }
  const bool asksItsResult = FactsOf(index).parameters.empty() && given.cArgs > 0;
  if (!asksItsResult) {
    Variant value = Get(index, given);
    if (result != nullptr) *result = value.Detach();
    return S_OK;
  }
  // "folder.Messages(2)": the arguments are for the object that the property gives.
  DISPPARAMS none = {};
  const Variant object = Get(index, none);
  if (object.Type() != VT_DISPATCH || V_DISPATCH(&object.Get()) == nullptr) {
    return DISP_E_BADPARAMCOUNT;
  }
  return static_cast<DispatchObject*>(V_DISPATCH(&object.Get()))
      ->Run(DISPID_VALUE, flags, given, result);
}

Variant DispatchObject::Get(std::size_t index, const DISPPARAMS& given) {
  const MemberFacts& member = FactsOf(index);
  const Parameters parameters = ParametersOf(member);
  const Arguments arguments(given, parameters.names.size(), parameters.required, false);
  if (!Enter(member, false, arguments)) return Nothing();
  if (index >= MemberCount()) return ReadCommon(index - MemberCount());
  const std::scoped_lock oneAtATime(StoreMutex());
  if (!AlwaysAnswers(index)) CheckUsable();
  return Read(index, arguments);
}

void DispatchObject::Put(std::size_t index, const DISPPARAMS& given) {
  const MemberFacts& member = FactsOf(index);
  const Parameters parameters = ParametersOf(member);
  const Arguments arguments(given, parameters.names.size(), parameters.required, true);
  if (!Enter(member, true, arguments)) return;
  const std::scoped_lock oneAtATime(StoreMutex());
  CheckUsable();
  const Variant value = CopyOf(arguments.PutValue());
  Write(index, arguments, value.Get());
}

bool DispatchObject::Enter(const MemberFacts& member, bool put, const Arguments& arguments) const {
  const std::vector<std::string> names = ParametersOf(member).names;
  std::string shown;
  std::size_t count = arguments.Count();
  while (count > 0 && !arguments.Given(count - 1)) --count;
  for (std::size_t i = 0; i < count; ++i) {
    shown += i == 0 ? "" : ", ";
    shown += names[i].ends_with(kSecret) ? "***" : Shown(arguments.At(i));
  }
  if (put) shown = Shown(arguments.PutValue());
  return EnterCall(std::string(ClassName()) + "." + std::string(member.name) + (put ? "=" : ""),
                   shown, Face().failWith);
}

}  // namespace desk
