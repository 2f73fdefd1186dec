// Automation objects over IDispatch.
#pragma once

#include <windows.h>
#include <memory>
#include <oleauto.h>

#include "platform/win32/ComPtr.h"
#include "ports/AutomationObject.h"

namespace quillon {

class Win32AutomationObjects final : public AutomationObjects {
 public:
  AutomationObjectPtr Create(const std::string& progId) override;
};

// Null for null.
AutomationObjectPtr AutomationObjectOf(IDispatch* object);

// The object behind one of these; null for null, and for one that was not made here.
ComPtr<IDispatch> DispatchOf(const AutomationObjectPtr& object);

}  // namespace quillon
