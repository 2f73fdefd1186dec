// A public class as the type library describes it: what all its objects share.
#pragma once

#include "automation/DualInterface.h"
#include "automation/PublicClass.h"
#include "automation/TypeLibrary.h"

namespace quillon {

struct ClassType {
  // Throws HresultError.
  ClassType(const TypeLibrary& library, const PublicClass& described)
      : dual(library.Info(described.interfaceId), described.errorSource),
        info(library.Info(described.id)) {}

  const DualInterface dual;
  const ComPtr<ITypeInfo> info;  // of the class, not of its interface
};

}  // namespace quillon
