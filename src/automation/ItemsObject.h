// The collection of texts that FolderList, HeaderItems and MessageItems hand out: Count, Item (from
// 1), and For Each. It is a copy: later changes of the message do not show in it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/ComObject.h"
#include "quillon_h.h"

namespace quillon {

class ItemsObject final : public DispatchObject<IItems> {
 public:
  ItemsObject(const DualInterface& type, ProcessLifetime& lifetime, std::vector<std::string> texts);

  HRESULT STDMETHODCALLTYPE get_Item(LONG index, VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE get_Count(LONG* value) override;
  HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** value) override;

 private:
  std::shared_ptr<const std::vector<std::string>> texts_;  // shared with the enumerators
};

}  // namespace quillon
