// Owns what a VARIANT holds.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <utility>

namespace quillon {

class Variant {
 public:
  Variant() noexcept { VariantInit(&value_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  Variant(Variant&& other) noexcept : value_(other.Detach()) {}
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Variant() { VariantClear(&value_); }

  VARTYPE Type() const noexcept { return V_VT(&value_); }
  const VARIANT& Get() const noexcept { return value_; }
  VARIANT& Get() noexcept { return value_; }

  // Where a function writes the value that it hands over.
  VARIANT* Put() noexcept {
    VariantClear(&value_);
    return &value_;
  }

  // Gives the content away.
  VARIANT Detach() noexcept {
    const VARIANT content = value_;
    VariantInit(&value_);
    return content;
  }

 private:
  VARIANT value_;
};

}  // namespace quillon
