// The frame of every operation with VIM: a step that fails ends it, with the status as the number
// and the text of the step, or that of the status for a step without one. Before that comes the
// box.
#pragma once

#include <string>
#include <utility>

#include "backends/Diagnostic.h"
#include "backends/vim/VimFailure.h"
#include "mail/BackEnd.h"

namespace quillon {

template <typename Operation>
MailResult RunVim(const Diagnostic& diagnostic, const MailRequest& request, Operation&& operation) {
  try {
    std::forward<Operation>(operation)();
    return {};
  } catch (const VimFailure& failure) {
    const std::string step = failure.what();
    auto result = diagnostic.Fail(request, step, failure.Number());
    if (!step.empty()) result.text = step;
    return result;
  }
}

}  // namespace quillon
