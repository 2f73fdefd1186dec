// What a C++ program needs for the interfaces of Quillon: texts, values and errors of automation.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <stdexcept>
#include <string>
#include <utility>

#ifdef _MSC_VER
// The compiler reads the type library out of the program.
#import "quillon.exe" no_namespace raw_interfaces_only named_guids
#else
#include "quillon_h.h"  // what widl makes of the type library's source
#endif

// A text for a call, freed behind it.
class Text {
 public:
  explicit Text(const std::wstring& text) : text_(SysAllocString(text.c_str())) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  ~Text() { SysFreeString(text_); }

  operator BSTR() const { return text_; }  // NOLINT(google-explicit-constructor): as calls take it

 private:
  BSTR text_;
};

// A value for a call or from one.
class Value {
 public:
  Value() { VariantInit(&value_); }
  explicit Value(long number) : Value() {
    value_.vt = VT_I4;
    value_.lVal = number;
  }
  explicit Value(const std::wstring& text) : Value() {
    value_.vt = VT_BSTR;
    value_.bstrVal = SysAllocString(text.c_str());
  }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  ~Value() { VariantClear(&value_); }

  operator VARIANT() const { return value_; }  // NOLINT(google-explicit-constructor): the same
  VARIANT* Place() { return &value_; }
  long Number() {
    return SUCCEEDED(VariantChangeType(&value_, &value_, 0, VT_I4)) ? value_.lVal : 0;
  }
  std::wstring String() {
    const bool text = SUCCEEDED(VariantChangeType(&value_, &value_, 0, VT_BSTR));
    return text && value_.bstrVal != nullptr ? std::wstring(value_.bstrVal) : std::wstring();
  }

 private:
  VARIANT value_;
};

// What Quillon says of a call that failed: its code, as 6027, and its text.
class MailError : public std::exception {
 public:
  explicit MailError(HRESULT result) : code_(result & 0xFFFF) {
    IErrorInfo* info = nullptr;
    BSTR text = nullptr;
    if (GetErrorInfo(0, &info) == S_OK) {
      info->GetDescription(&text);
      info->Release();
    }
    if (text != nullptr) text_ = text;
    SysFreeString(text);
  }

  long Code() const { return code_; }
  const std::wstring& Description() const { return text_; }

 private:
  long code_;
  std::wstring text_;
};

inline void Check(HRESULT result) {
  if (FAILED(result)) throw MailError(result);
}

// One reference to an object.
template <class Interface>
class Reference {
 public:
  explicit Reference(const wchar_t* progId) {
    CLSID id = {};
    Check(CLSIDFromProgID(progId, &id));
    void* object = nullptr;
    Check(CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(Interface), &object));
    object_ = static_cast<Interface*>(object);
  }
  Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;
  Reference& operator=(Reference&&) = delete;
  ~Reference() {
    if (object_ != nullptr) object_->Release();
  }

  Interface* operator->() const { return object_; }
  Interface* Get() const { return object_; }

 private:
  Interface* object_ = nullptr;
};
