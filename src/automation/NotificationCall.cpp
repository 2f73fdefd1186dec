#include "automation/NotificationCall.h"

#include <algorithm>
#include <array>

#include "platform/win32/Bstr.h"
#include "platform/win32/Variant.h"

namespace quillon {
namespace {

// The method takes seven longs and a text by reference, and returns a long that means nothing.
constexpr std::size_t kNumbers = 7;
constexpr std::size_t kArguments = kNumbers + 1;

bool IsGone(HRESULT result) {
  constexpr std::array<HRESULT, 6> kGone{
      RPC_E_DISCONNECTED,
      RPC_E_SERVER_DIED,
      RPC_E_SERVER_DIED_DNE,
      CO_E_OBJNOTCONNECTED,
      static_cast<HRESULT>(0x800706BA),  // RPC_S_SERVER_UNAVAILABLE
      static_cast<HRESULT>(0x800706BE),  // RPC_S_CALL_FAILED
  };
  return std::find(kGone.begin(), kGone.end(), result) != kGone.end();
}

class NotificationCall final : public NotificationObject {
 public:
  NotificationCall(ComPtr<IDispatch> object, DISPID method)
      : object_(std::move(object)), method_(method) {}

  bool AsynchNotification(const AsynchEvent& event) override {
    // Scripts know arguments by reference as variants alone (Wine's JScript engine takes others and
    // breaks down later); an object with declared types says when it wants those.
    if (takesVariants_) {
      const HRESULT result = Call(event, true);
      takesVariants_ = result != DISP_E_TYPEMISMATCH && result != DISP_E_BADVARTYPE;
      if (takesVariants_) return !IsGone(result);
    }
    return !IsGone(Call(event, false));
  }

 private:
  HRESULT Call(const AsynchEvent& event, bool variants) {
    std::array<LONG, kNumbers> numbers{event.operation, event.kind,   event.done,    event.total,
                                       event.message,   event.result, event.reserved};
    BSTR text = Bstr(event.text).Detach();
    std::array<Variant, kArguments> values;  // what the references refer to
    std::array<VARIANT, kArguments> arguments{};
    for (std::size_t i = 0; i < kArguments; ++i) {
      VARIANT& argument = arguments[kArguments - 1 - i];  // the last one stands first
      if (variants) {
        VARIANT& value = values[i].Get();
        if (i < kNumbers) {
          V_VT(&value) = VT_I4;
          V_I4(&value) = numbers[i];
        } else {
          V_VT(&value) = VT_BSTR;
          V_BSTR(&value) = std::exchange(text, nullptr);
        }
        V_VT(&argument) = VT_BYREF | VT_VARIANT;
        V_VARIANTREF(&argument) = &value;
      } else if (i < kNumbers) {
        V_VT(&argument) = VT_BYREF | VT_I4;
        V_I4REF(&argument) = &numbers[i];
      } else {
        V_VT(&argument) = VT_BYREF | VT_BSTR;
        V_BSTRREF(&argument) = &text;
      }
    }
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(kArguments), 0};
    Variant ignored;
    EXCEPINFO exception{};
    UINT argument = 0;
    const auto object = object_;  // the client may unregister it meanwhile
    const HRESULT result = object->Invoke(method_, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                          &parameters, ignored.Put(), &exception, &argument);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    SysFreeString(text);
    return result;
  }

  const ComPtr<IDispatch> object_;
  const DISPID method_;
  bool takesVariants_ = true;
};

}  // namespace

std::shared_ptr<NotificationObject> MakeNotificationObject(IDispatch* object) {
  if (object == nullptr) return nullptr;
  std::wstring name = L"AsynchNotification";
  wchar_t* names = name.data();
  DISPID method = DISPID_UNKNOWN;
  if (FAILED(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &method))) {
    return nullptr;
  }
  object->AddRef();
  return std::make_shared<NotificationCall>(ComPtr<IDispatch>::Attach(object), method);
}

}  // namespace quillon
