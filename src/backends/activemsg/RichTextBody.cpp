#include "backends/activemsg/RichTextBody.h"

#include "backends/activemsg/Collections.h"
#include "core/AutomationValues.h"

namespace quillon {

bool IsRichText(std::string_view body) {
  return body.starts_with("{\\rtf");
}

void StoreRichText(const RichTextPorts& ports, AutomationObject& session,
                   const std::string& profile, AutomationObject& messages, MessageDraft& draft,
                   const std::string& body) {
  const auto id = TextOf(draft->Get("ID"));
  const auto storeId = TextOf(draft->Get("StoreID"));
  if (ports.library.Write(profile, id, storeId, body) != 0) {
    ports.messageBox.Show("VBSendRTF Warning", "RTF Property not stored successfully!",
                          MessageBoxPort::Icon::None);
  }
  draft->Call("Update");
  draft.Refetched(RequireObject(session.Call("GetMessage", Arguments({id, storeId}))));
  messages.Put("Filter", AutomationObjectPtr());
}

}  // namespace quillon
