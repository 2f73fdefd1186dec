// Owns a SAFEARRAY, and gives safe access to the elements of a one-dimensional one.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <span>
#include <utility>

namespace quillon {

class SafeArray {
 public:
  SafeArray() = default;
  explicit SafeArray(SAFEARRAY* array) noexcept : array_(array) {}
  SafeArray(const SafeArray&) = delete;
  SafeArray& operator=(const SafeArray&) = delete;
  SafeArray(SafeArray&& other) noexcept : array_(other.Detach()) {}
  SafeArray& operator=(SafeArray&& other) noexcept {
    std::swap(array_, other.array_);
    return *this;
  }
  ~SafeArray() {
    if (array_ != nullptr) SafeArrayDestroy(array_);
  }

  // Zero-based, filled with zero bytes; null when memory is short.
  static SafeArray Make(VARTYPE type, std::size_t count) noexcept {
    return SafeArray(SafeArrayCreateVector(type, 0, static_cast<ULONG>(count)));
  }

  SAFEARRAY* Get() const noexcept { return array_; }
  SAFEARRAY** Place() noexcept { return &array_; }
  SAFEARRAY* Detach() noexcept { return std::exchange(array_, nullptr); }
  explicit operator bool() const noexcept { return array_ != nullptr; }

 private:
  SAFEARRAY* array_ = nullptr;
};

// The elements of a one-dimensional array, locked for as long as this lives. Empty for any other
// array.
template <class Element>
class ArrayElements {
 public:
  explicit ArrayElements(SAFEARRAY* array) noexcept : array_(array) {
    if (array == nullptr || SafeArrayGetDim(array) != 1) return;
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(array, &data))) return;
    locked_ = true;
    elements_ = {static_cast<Element*>(data), array->rgsabound[0].cElements};
  }
  ArrayElements(const ArrayElements&) = delete;
  ArrayElements& operator=(const ArrayElements&) = delete;
  ~ArrayElements() {
    if (locked_) SafeArrayUnaccessData(array_);
  }

  bool Locked() const noexcept { return locked_; }
  std::span<Element> Get() const noexcept { return elements_; }

 private:
  SAFEARRAY* array_;
  std::span<Element> elements_;
  bool locked_ = false;
};

}  // namespace quillon
