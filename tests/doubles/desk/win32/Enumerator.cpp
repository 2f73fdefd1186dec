#include "desk/win32/Enumerator.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "desk/win32/DispatchObject.h"

namespace desk {
namespace {

using Items = std::shared_ptr<const std::vector<Variant>>;

class Enumerator final : public IEnumVARIANT {
 public:
  Enumerator(Items items, std::size_t place) : items_(std::move(items)), place_(place) {
    ++LiveObjects();
  }
  Enumerator(const Enumerator&) = delete;
  Enumerator& operator=(const Enumerator&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IEnumVARIANT ? this : nullptr;
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) override {
    if (values == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
    ULONG taken = 0;
    for (; taken < count && place_ < items_->size(); ++taken, ++place_) {
      VariantInit(&values[taken]);
      const HRESULT result =
          VariantCopy(&values[taken], const_cast<VARIANT*>(&(*items_)[place_].Get()));
      if (FAILED(result)) return result;
    }
    if (fetched != nullptr) *fetched = taken;
    return taken == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const std::size_t left = items_->size() - place_;
    place_ += std::min<std::size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    place_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override {
    if (copy == nullptr) return E_POINTER;
    *copy = new (std::nothrow) Enumerator(items_, place_);
    return *copy == nullptr ? E_OUTOFMEMORY : S_OK;
  }

 private:
  ~Enumerator() { --LiveObjects(); }

  ULONG references_ = 1;
  Items items_;
  std::size_t place_;
};

}  // namespace

ComPtr<IEnumVARIANT> Enumerate(std::vector<Variant> items) {
  return ComPtr<IEnumVARIANT>::Attach(
      new Enumerator(std::make_shared<const std::vector<Variant>>(std::move(items)), 0));
}

}  // namespace desk
