#include "platform/win32/Win32AutomationObject.h"

#include <array>
#include <cstdio>
#include <vector>

#include "platform/win32/AutomationVariant.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/FaultGuard.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

[[noreturn]] void Fail(HRESULT number, std::string_view what) {
  std::array<char, 16> digits{};
  std::snprintf(digits.data(), digits.size(), " (0x%08lX)", static_cast<unsigned long>(number));
  throw AutomationError(number, std::string(what) + digits.data());
}

// The error record of a call, with the texts that the caller owns.
class ErrorRecord {
 public:
  ErrorRecord() = default;
  ErrorRecord(const ErrorRecord&) = delete;
  ErrorRecord& operator=(const ErrorRecord&) = delete;
  ~ErrorRecord() {
    SysFreeString(record_.bstrSource);
    SysFreeString(record_.bstrDescription);
    SysFreeString(record_.bstrHelpFile);
  }

  EXCEPINFO* Place() noexcept { return &record_; }

  [[noreturn]] void Throw(std::string_view member) {
    if (record_.pfnDeferredFillIn != nullptr) record_.pfnDeferredFillIn(&record_);
    const HRESULT number = record_.scode != S_OK ? record_.scode : HRESULT{record_.wCode};
    const auto words = Utf8FromBstr(record_.bstrDescription);
    if (words.empty()) Fail(number, member);
    throw AutomationError(number, words);
  }

 private:
  EXCEPINFO record_ = {};
};

class DispatchedObject final : public AutomationObject {
 public:
  explicit DispatchedObject(IDispatch* object) : object_(object) {}

  IDispatch* Dispatch() const noexcept { return object_.Get(); }

  // As Basic does it: what is a property and what a method is the object's own affair.
  AutomationValue Get(std::string_view member, const AutomationArguments& arguments) override {
    return Call(member, arguments);
  }
  AutomationValue Call(std::string_view member, const AutomationArguments& arguments) override {
    return Invoke(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
  }
  void Put(std::string_view member, const AutomationValue& value) override {
    const bool object = std::holds_alternative<AutomationObjectPtr>(value);
    try {
      Invoke(member, object ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT, {value});
    } catch (const AutomationError& error) {
      // An object that knows assignments of values only.
      if (!object || error.Number() != DISP_E_MEMBERNOTFOUND) throw;
      Invoke(member, DISPATCH_PROPERTYPUT, {value});
    }
  }

 private:
  // The numbers of the member and of its named arguments.
  std::vector<DISPID> Numbers(std::string_view member, const AutomationArguments& arguments) {
    std::vector<std::wstring> names{WideFromUtf8(member)};
    for (const auto& argument : arguments) {
      if (!argument.name.empty()) names.push_back(WideFromUtf8(argument.name));
    }
    std::vector<LPOLESTR> texts;
    texts.reserve(names.size());
    for (auto& name : names) texts.push_back(name.data());
    std::vector<DISPID> numbers(names.size());
    HRESULT result = E_FAIL;
    Guarded([&] {
      result = object_->GetIDsOfNames(IID_NULL, texts.data(), static_cast<UINT>(texts.size()),
                                      LOCALE_USER_DEFAULT, numbers.data());
    });
    if (FAILED(result)) Fail(result, member);
    return numbers;
  }

  AutomationValue Invoke(std::string_view member, WORD kind, const AutomationArguments& arguments) {
    const bool put = (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    auto numbers = Numbers(member, arguments);
    const auto id = numbers[0];
    numbers.erase(numbers.begin());
    if (put) numbers.push_back(DISPID_PROPERTYPUT);
    // The last one first; so are their names.
    std::vector<Variant> owned;
    for (auto i = arguments.size(); i-- > 0;) owned.push_back(VariantOf(arguments[i].value));
    const std::vector<DISPID> named(numbers.rbegin(), numbers.rend());
    std::vector<VARIANT> values;
    values.reserve(owned.size());
    for (const auto& one : owned) values.push_back(one.Get());
    DISPPARAMS parameters{values.data(), const_cast<DISPID*>(named.data()),
                          static_cast<UINT>(values.size()), static_cast<UINT>(named.size())};
    Variant answer;
    ErrorRecord error;
    UINT wrong = 0;
    HRESULT result = E_FAIL;
    VARIANT* const place = put ? nullptr : answer.Put();
    Guarded([&] {
      result = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, place,
                               error.Place(), &wrong);
    });
    if (result == DISP_E_EXCEPTION) error.Throw(member);
    if (FAILED(result)) Fail(result, member);
    return ValueOf(answer.Get());
  }

  ComPtr<IDispatch> object_;
};

}  // namespace

AutomationObjectPtr Win32AutomationObjects::Create(const std::string& progId) {
  CLSID id{};
  HRESULT result = CLSIDFromProgID(WideFromUtf8(progId).c_str(), &id);
  if (FAILED(result)) Fail(result, progId);
  ComPtr<IDispatch> object;
  bool returned = false;
  returned = Guarded([&] {
    result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                              IID_IDispatch, object.PutVoid());
  });
  if (!returned) result = E_FAIL;
  if (FAILED(result)) Fail(result, progId);
  return AutomationObjectOf(object.Get());
}

AutomationObjectPtr AutomationObjectOf(IDispatch* object) {
  if (object == nullptr) return nullptr;
  return std::make_shared<DispatchedObject>(object);
}

ComPtr<IDispatch> DispatchOf(const AutomationObjectPtr& object) {
  const auto* const dispatched = dynamic_cast<const DispatchedObject*>(object.get());
  return ComPtr<IDispatch>(dispatched != nullptr ? dispatched->Dispatch() : nullptr);
}

}  // namespace quillon
