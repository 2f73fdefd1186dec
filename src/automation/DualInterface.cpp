#include "automation/DualInterface.h"

#include <algorithm>
#include <array>

#include "automation/CallFrame.h"
#include "automation/ComCall.h"
#include "platform/win32/Bstr.h"

namespace quillon {
namespace {

constexpr WORD kGetFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr UINT kMostParameters = 16;

// Names of the interface are ASCII; other letters stay as they are and match nothing.
std::wstring Folded(std::wstring_view name) {
  std::wstring folded(name);
  for (wchar_t& letter : folded) {
    if (letter >= L'A' && letter <= L'Z') letter = static_cast<wchar_t>(letter - L'A' + L'a');
  }
  return folded;
}

Parameter ReadType(const TYPEDESC& described) {
  const TYPEDESC* type = &described;
  Parameter parameter;
  if (type->vt == VT_PTR) {
    parameter.byReference = true;
    type = type->lptdesc;
  }
  parameter.type = type->vt;
  if (type->vt == VT_SAFEARRAY) {
    parameter.type = static_cast<VARTYPE>(VT_ARRAY | type->lptdesc->vt);
  }
  return parameter;
}

// Releases the description that a type library hands out.
class FunctionDescription {
 public:
  FunctionDescription(ITypeInfo* info, UINT index) : info_(info) {
    ThrowIfFailed(info->GetFuncDesc(index, &described_));
  }
  FunctionDescription(const FunctionDescription&) = delete;
  FunctionDescription& operator=(const FunctionDescription&) = delete;
  ~FunctionDescription() { info_->ReleaseFuncDesc(described_); }

  const FUNCDESC* operator->() const noexcept { return described_; }

 private:
  ITypeInfo* info_;
  FUNCDESC* described_ = nullptr;
};

std::vector<std::wstring> NamesOf(ITypeInfo* info, DISPID id) {
  std::array<BSTR, kMostParameters + 1> texts{};
  UINT count = 0;
  ThrowIfFailed(info->GetNames(id, texts.data(), static_cast<UINT>(texts.size()), &count));
  std::vector<std::wstring> names;
  for (UINT i = 0; i < count; ++i) {
    names.emplace_back(ViewOf(texts[i]));
    SysFreeString(texts[i]);
  }
  return names;
}

UINT CountFunctions(ITypeInfo* info) {
  TYPEATTR* attributes = nullptr;
  ThrowIfFailed(info->GetTypeAttr(&attributes));
  const UINT count = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  return count;
}

}  // namespace

DualInterface::DualInterface(ComPtr<ITypeInfo> info, const wchar_t* errorSource)
    : info_(std::move(info)), errorSource_(errorSource) {
  // The library describes a dual interface twice; the vtable's description tells results from
  // parameters.
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> vtableInfo;
  ThrowIfFailed(info_->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
  ThrowIfFailed(info_->GetRefTypeInfo(reference, vtableInfo.Put()));
  ReadFunctions(vtableInfo.Get());
  std::sort(names_.begin(), names_.end());
  names_.erase(std::unique(names_.begin(), names_.end()), names_.end());
}

void DualInterface::ReadFunctions(ITypeInfo* vtableInfo) {
  const UINT count = CountFunctions(vtableInfo);
  for (UINT index = 0; index < count; ++index) {
    const FunctionDescription described(vtableInfo, index);
    const std::vector<std::wstring> names = NamesOf(vtableInfo, described->memid);
    Function function;
    function.id = described->memid;
    function.kind = described->invkind;
    function.vtableOffset = static_cast<ULONG>(described->oVft);
    for (UINT i = 0; i < static_cast<UINT>(described->cParams); ++i) {
      const ELEMDESC& element = described->lprgelemdescParam[i];
      Parameter parameter = ReadType(element.tdesc);
      const auto flags = element.paramdesc.wParamFlags;
      if ((flags & PARAMFLAG_FRETVAL) != 0) {
        function.result = parameter.type;
        continue;
      }
      parameter.optional = parameter.type == VT_VARIANT && (flags & PARAMFLAG_FOPT) != 0;
      parameter.handedBack = parameter.byReference && (flags & PARAMFLAG_FOUT) != 0;
      if (i + 1 < names.size()) parameter.name = Folded(names[i + 1]);
      function.parameters.push_back(std::move(parameter));
    }
    names_.emplace_back(Folded(names.at(0)), function.id);
    functions_.push_back(std::move(function));
  }
}

HRESULT DualInterface::GetTypeInfo(UINT index, ITypeInfo** info) const noexcept {
  if (info == nullptr) return E_POINTER;
  *info = nullptr;
  if (index != 0) return DISP_E_BADINDEX;
  *info = ComPtr<ITypeInfo>(info_).Detach();
  return S_OK;
}

DISPID DualInterface::FindMember(std::wstring_view name) const noexcept {
  const auto found = std::lower_bound(
      names_.begin(), names_.end(), name,
      [](const auto& entry, std::wstring_view wanted) { return entry.first < wanted; });
  return found != names_.end() && found->first == name ? found->second : DISPID_UNKNOWN;
}

DISPID DualInterface::FindParameter(DISPID member, std::wstring_view name) const noexcept {
  for (const Function& function : functions_) {
    if (function.id != member) continue;
    for (std::size_t i = 0; i < function.parameters.size(); ++i) {
      if (function.parameters[i].name == name) return static_cast<DISPID>(i);
    }
  }
  return DISPID_UNKNOWN;
}

HRESULT DualInterface::GetIDsOfNames(REFIID iid, OLECHAR** names, UINT count,
                                     DISPID* ids) const noexcept {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
  HRESULT result = S_OK;
  try {
    ids[0] = FindMember(Folded(names[0]));
    for (UINT i = 1; i < count; ++i) ids[i] = FindParameter(ids[0], Folded(names[i]));
  } catch (...) {
    return E_OUTOFMEMORY;
  }
  for (UINT i = 0; i < count; ++i) {
    if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
  }
  return result;
}

const Function* DualInterface::Find(DISPID id, WORD flags, const DISPPARAMS& given) const noexcept {
  WORD kinds = flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
  if ((flags & kGetFlags) != 0) kinds |= kGetFlags;
  // A client that offers both kinds of put means "the one that suits the value".
  const bool object = given.cArgs > 0 && V_VT(&given.rgvarg[0]) == VT_DISPATCH;
  const WORD preferred = object ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT;
  const Function* found = nullptr;
  for (const Function& function : functions_) {
    if (function.id != id || (function.kind & kinds) == 0) continue;
    if (found == nullptr || (function.kind & preferred) != 0) found = &function;
  }
  return found;
}

HRESULT DualInterface::Invoke(void* object, DISPID id, REFIID iid, LCID locale, WORD flags,
                              DISPPARAMS* given, VARIANT* result, EXCEPINFO* exception,
                              UINT* argumentError) const noexcept {
  if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (given == nullptr) return E_INVALIDARG;
  const Function* function = Find(id, flags, *given);
  if (function == nullptr) return DISP_E_MEMBERNOTFOUND;
  try {
    CallFrame frame(*function, locale);
    HRESULT outcome = frame.TakeArguments(*given, argumentError);
    if (FAILED(outcome)) return outcome;
    outcome = frame.Call(object);
    if (FAILED(outcome)) {
      return frame.ReportFailure(outcome, errorSource_, exception, argumentError);
    }
    outcome = frame.HandBack();
    if (SUCCEEDED(outcome) && result != nullptr) frame.MoveResult(*result);
    return outcome;
  } catch (...) {
    return TranslateCurrentException(errorSource_);
  }
}

}  // namespace quillon
