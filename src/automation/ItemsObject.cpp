#include "automation/ItemsObject.h"

#include <algorithm>
#include <utility>

#include "automation/ComCall.h"
#include "automation/Conversion.h"

namespace quillon {
namespace {

using Texts = std::shared_ptr<const std::vector<std::string>>;

class TextEnumerator final : public ComObject<IEnumVARIANT> {
 public:
  TextEnumerator(ProcessLifetime& lifetime, const wchar_t* errorSource, Texts texts,
                 std::size_t position)
      : lifetime_(lifetime),
        process_(lifetime),
        errorSource_(errorSource),
        texts_(std::move(texts)),
        position_(position) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) override {
    ULONG done = 0;
    const HRESULT result = ComCall(errorSource_, [&] {
      if (values == nullptr || (fetched == nullptr && count != 1)) throw HresultError(E_POINTER);
      for (; done < count && position_ < texts_->size(); ++done, ++position_) {
        values[done] = VariantFromValue((*texts_)[position_]).Detach();
      }
    });
    if (fetched != nullptr) *fetched = done;
    return FAILED(result) || done == count ? result : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const std::size_t left = texts_->size() - position_;
    position_ += std::min<std::size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    position_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override {
    return ComCall(errorSource_, [&] {
      Output(copy) = new TextEnumerator(lifetime_, errorSource_, texts_, position_);
    });
  }

 private:
  ProcessLifetime& lifetime_;
  ProcessReference process_;
  const wchar_t* errorSource_;
  Texts texts_;
  std::size_t position_;
};

}  // namespace

ItemsObject::ItemsObject(const DualInterface& type, ProcessLifetime& lifetime,
                         std::vector<std::string> texts)
    : DispatchObject(type, lifetime),
      texts_(std::make_shared<const std::vector<std::string>>(std::move(texts))) {}

HRESULT STDMETHODCALLTYPE ItemsObject::get_Item(LONG index, VARIANT* value) {
  return Call([&] {
    VariantInit(&Output(value));
    if (index < 1 || static_cast<std::size_t>(index) > texts_->size()) {
      throw HresultError(DISP_E_BADINDEX);
    }
    *value = VariantFromValue((*texts_)[static_cast<std::size_t>(index) - 1]).Detach();
  });
}

HRESULT STDMETHODCALLTYPE ItemsObject::get_Count(LONG* value) {
  return Call([&] { Output(value) = static_cast<LONG>(texts_->size()); });
}

HRESULT STDMETHODCALLTYPE ItemsObject::get__NewEnum(IUnknown** value) {
  return Call([&] { Output(value) = new TextEnumerator(Lifetime(), ErrorSource(), texts_, 0); });
}

}  // namespace quillon
