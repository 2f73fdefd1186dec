// The edge that every COM method runs in: no exception leaves it. What the body throws becomes the
// HRESULT of the method and, for ISupportErrorInfo, the thread's error object.
//
//   ServerError        0x80040000 + code, its text
//   ConversionError    DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW
//   MailSystemBusy     RPC_E_SERVERCALL_RETRYLATER
//   HresultError       its number
//   std::bad_alloc     E_OUTOFMEMORY
//   anything else      E_UNEXPECTED with the exception's text
//
// The error object names the source that the class has given itself.
#pragma once

#include <windows.h>
#include <array>
#include <cstdio>
#include <exception>
#include <oleauto.h>

namespace quillon {

// A failed system call, or a failure that is nothing but a COM number.
class HresultError : public std::exception {
 public:
  explicit HresultError(HRESULT number) : number_(number) {
    std::snprintf(text_.data(), text_.size(), "HRESULT 0x%08lX",
                  static_cast<unsigned long>(number));
  }

  HRESULT Number() const noexcept { return number_; }
  const char* what() const noexcept override { return text_.data(); }

 private:
  HRESULT number_;
  std::array<char, 24> text_{};
};

inline void ThrowIfFailed(HRESULT result) {
  if (FAILED(result)) throw HresultError(result);
}

// Where a method puts a result.
template <class Type>
Type& Output(Type* place) {
  if (place == nullptr) throw HresultError(E_POINTER);
  return *place;
}

// To be called while an exception is handled.
HRESULT TranslateCurrentException(const wchar_t* errorSource) noexcept;

template <class Body>
HRESULT ComCall(const wchar_t* errorSource, Body&& body) noexcept {
  SetErrorInfo(0, nullptr);
  try {
    body();
    return S_OK;
  } catch (...) {
    return TranslateCurrentException(errorSource);
  }
}

}  // namespace quillon
