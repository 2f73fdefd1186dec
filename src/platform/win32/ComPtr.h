// Holds one reference to a COM object.
#pragma once

#include <windows.h>
#include <unknwn.h>
#include <utility>

namespace quillon {

template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  // Adds a reference of its own.
  explicit ComPtr(Interface* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  ComPtr(const ComPtr& other) noexcept : ComPtr(other.object_) {}
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() {
    if (object_ != nullptr) object_->Release();
  }

  Interface* Get() const noexcept { return object_; }
  Interface* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // Where a function writes the reference that it hands over; what was held is released.
  Interface** Put() noexcept {
    *this = ComPtr();
    return &object_;
  }
  void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

  // Gives the reference away.
  Interface* Detach() noexcept { return std::exchange(object_, nullptr); }

  // Takes a reference over without adding one.
  static ComPtr Attach(Interface* object) noexcept {
    ComPtr pointer;
    pointer.object_ = object;
    return pointer;
  }

 private:
  Interface* object_ = nullptr;
};

// The other interface of the object, or nothing.
template <class Interface>
ComPtr<Interface> QueryFor(IUnknown* object) noexcept {
  ComPtr<Interface> found;
  if (object != nullptr) object->QueryInterface(__uuidof(Interface), found.PutVoid());
  return found;
}

}  // namespace quillon
