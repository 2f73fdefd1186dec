// Owns a BSTR, the text of automation: UTF-16 with its own length.
#pragma once

#include <windows.h>
#include <new>
#include <oleauto.h>
#include <string>
#include <string_view>
#include <utility>

#include "platform/win32/WideText.h"

namespace quillon {

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(std::string_view utf8) : Bstr(std::wstring_view(WideFromUtf8(utf8))) {}
  explicit Bstr(std::wstring_view wide)
      : text_(SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()))) {
    if (text_ == nullptr) throw std::bad_alloc();
  }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  Bstr(Bstr&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  Bstr& operator=(Bstr&& other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  ~Bstr() { SysFreeString(text_); }

  BSTR Get() const noexcept { return text_; }
  BSTR Detach() noexcept { return std::exchange(text_, nullptr); }

  // Where a function writes the text that it hands over.
  BSTR* Put() noexcept {
    SysFreeString(Detach());
    return &text_;
  }

 private:
  BSTR text_ = nullptr;
};

// A null BSTR is the empty text.
inline std::wstring_view ViewOf(BSTR text) noexcept {
  return {text, SysStringLen(text)};
}
inline std::string Utf8FromBstr(BSTR text) {
  return Utf8FromWide(ViewOf(text));
}

}  // namespace quillon
