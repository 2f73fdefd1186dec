// One late-bound call on its way to the vtable: the arguments in the types the function declares,
// and what goes back.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <vector>

#include "automation/DualInterface.h"
#include "platform/win32/Variant.h"

namespace quillon {

class CallFrame {
 public:
  CallFrame(const Function& function, LCID locale);

  // Puts each given argument, by position or by name, into the type of its parameter. Fails with
  // the standard DISP_E_ numbers; `argumentError` (may be null) gets the index in `all` of the
  // argument that does not fit.
  HRESULT TakeArguments(const DISPPARAMS& all, UINT* argumentError);

  HRESULT Call(void* object);

  // Writes by-reference arguments back into the caller's variables, whatever type those have.
  HRESULT HandBack();

  void MoveResult(VARIANT& result) noexcept;

  // The HRESULT and EXCEPINFO of a failed call; `source` is for failures that name none. A value
  // that the function itself could not convert counts as a wrong argument.
  HRESULT ReportFailure(HRESULT failure, const wchar_t* source, EXCEPINFO* exception,
                        UINT* argumentError) const;

 private:
  struct Argument {
    VARIANT* given = nullptr;  // in the caller's array
    UINT index = 0;            // its place there
    Variant owned;             // the converted value, when it is not the caller's own
    VARIANT before = {};       // a by-reference value as the function got it
    VARIANT passed = {};       // what the function gets: the value, or VT_BYREF to `owned`
  };

  HRESULT Match(const DISPPARAMS& given, UINT* argumentError);
  HRESULT TakeValue(const Parameter& parameter, Argument& argument) const;
  HRESULT HandBackOne(const Parameter& parameter, Argument& argument) const;

  const Function& function_;
  LCID locale_;
  std::vector<Argument> arguments_;
  Variant result_;
};

}  // namespace quillon
