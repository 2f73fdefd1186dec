// The failures a member can leave with. ServerError is the public error shape (code and text);
// ConversionError says that a client's value is not of the type that a property or argument takes.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace quillon {

// Raised with one of the server's own codes (515 to 599, 750 to 759) or with a folded mail-system
// number. The public number is 0x80040000 + code; an empty text stands for the text of the message
// table.
class ServerError : public std::exception {
 public:
  explicit ServerError(std::int32_t code, std::string text = {})
      : code_(code), text_(std::move(text)) {}

  std::int32_t Code() const noexcept { return code_; }
  const std::string& Text() const noexcept { return text_; }
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::int32_t code_;
  std::string text_;
};

// A value that does not convert: automation answers DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW.
class ConversionError : public std::exception {
 public:
  enum class Reason { TypeMismatch, Overflow };

  explicit ConversionError(Reason reason) noexcept : reason_(reason) {}

  Reason Why() const noexcept { return reason_; }
  const char* what() const noexcept override {
    return reason_ == Reason::Overflow ? "overflow" : "type mismatch";
  }

 private:
  Reason reason_;
};

}  // namespace quillon
