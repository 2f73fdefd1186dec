// A message that VIM holds open for this program. It is closed with this object, whatever VIM says
// to that, unless it has been closed or sent before.
#pragma once

#include <string>
#include <utility>

#include "backends/vim/VimFailure.h"
#include "ports/Vim.h"

namespace quillon {

class VimMessage {
 public:
  VimMessage(Vim& library, vim::Handle handle) : library_(library), handle_(handle) {}
  VimMessage(const VimMessage&) = delete;
  VimMessage& operator=(const VimMessage&) = delete;
  ~VimMessage() {
    if (handle_ != 0) library_.CloseMessage(handle_);
  }

  vim::Handle Handle() const noexcept { return handle_; }

  // Throws VimFailure.
  void Close(const std::string& step) {
    CheckVim(library_.CloseMessage(std::exchange(handle_, 0)), step);
  }
  vim::Status Send() { return library_.SendMessage(std::exchange(handle_, 0)); }

 private:
  Vim& library_;
  vim::Handle handle_;
};

}  // namespace quillon
