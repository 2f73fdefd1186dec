#include "backends/activemsg/MessageContent.h"

#include <array>

#include "backends/RecipientParts.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/StepFailure.h"
#include "core/AutomationValues.h"
#include "mail/OutgoingText.h"

namespace quillon {

namespace {

constexpr std::int32_t kLow = 0;  // importance
constexpr std::int32_t kNormal = 1;
constexpr std::int32_t kHigh = 2;

constexpr std::int32_t kFileData = 1;  // type of an attachment

// Properties that the message has no member for, by their published tags.
constexpr std::int32_t kNonDeliveryReport = 0x0C08000B;
constexpr std::int32_t kDeliveryReport = 0x0023000B;
constexpr std::int32_t kSensitivity = 0x00360003;

// The library's own are 1 personal, 2 private, 3 confidential, and so are ours.
constexpr std::int16_t kMostSensitive = 3;

struct RecipientList {
  std::vector<std::string> MessageBuffers::*entries;
  std::int32_t type;
  const char* refused;
};

constexpr std::array kRecipientLists{
    RecipientList{&MessageBuffers::to, 1, "Unable to add TO recipient. (MAPISendMailQLN_OLE)"},
    RecipientList{&MessageBuffers::bcc, 3, "Unable to add BCC recipient. (MAPISendMailQLN_OLE)"},
    RecipientList{&MessageBuffers::cc, 2, "Unable to add CC recipient. (MAPISendMailQLN_OLE)"},
};

// A new item of a collection, which the library may refuse by giving none.
AutomationObjectPtr NewItem(AutomationObject& collection, const AutomationArguments& arguments,
                            const char* refused, std::int32_t number) {
  try {
    if (auto item = ObjectOf(collection.Call("Add", arguments))) return item;
  } catch (const AutomationError&) {
    // What it says to it is not more than that.
  }
  throw StepFailure(refused, number);
}

void AddRecipient(AutomationObject& recipients, const RecipientList& list, const std::string& text,
                  const InstanceState& instance) {
  const auto recipient =
      NewItem(recipients, Arguments({AutomationMissing(), AutomationMissing(), list.type}),
              list.refused, active_messaging::kInvalidRecipients);
  const auto parts = SplitRecipient(text);
  recipient->Put("Name", parts.name);
  // Without one the library looks the name up.
  if (!parts.address.empty()) recipient->Put("Address", parts.address);
  if (instance.nameResolution != kFalse) {
    recipient->Call("Resolve", Arguments({instance.nativeMailDialog != kFalse}));
  }
}

}  // namespace

std::int32_t LibraryImportance(std::int16_t importance) {
  if (importance == 3) return kNormal;
  return importance < 3 ? kHigh : kLow;
}

std::int16_t OwnImportance(std::int32_t libraryImportance) {
  if (libraryImportance == kNormal) return 3;
  return libraryImportance > kNormal ? 1 : 5;
}

void PutText(AutomationObject& message, const MessageBuffers& content) {
  message.Put("subject", content.subject);
  message.Put("text", OutgoingText(content));
}

void PutOptions(AutomationObject& message, const MailRequest& request) {
  const auto& instance = request.instance;
  message.Put("ReadReceipt", request.shared.message.certify != kFalse);
  message.Put("Importance", LibraryImportance(instance.importance));
  const bool sensitive = instance.sensitivity >= 1 && instance.sensitivity <= kMostSensitive;
  if (instance.deliveryReport == 0 && !sensitive) return;
  const auto fields = RequireObject(message.Get("Fields"));
  if (instance.deliveryReport == 1) fields->Call("Add", Arguments({kNonDeliveryReport, true}));
  if (instance.deliveryReport >= 2) fields->Call("Add", Arguments({kDeliveryReport, true}));
  if (sensitive) {
    fields->Call("Add", Arguments({kSensitivity, std::int32_t{instance.sensitivity}}));
  }
}

void AddRecipients(AutomationObject& message, const MailRequest& request) {
  const auto recipients = RequireObject(message.Get("Recipients"));
  for (const auto& list : kRecipientLists) {
    for (const auto& text : request.shared.message.*list.entries) {
      AddRecipient(*recipients, list, text, request.instance);
    }
  }
}

void AddAttachments(AutomationObject& message, FileSystem& files,
                    const std::vector<Attachment>& attachments, const char* context) {
  if (attachments.empty()) return;
  const auto collection = RequireObject(message.Get("attachments"));
  for (const auto& attachment : attachments) {
    const auto item = NewItem(*collection, {}, context, active_messaging::kAttachmentWriteFailure);
    item->Put("Type", kFileData);  // the source is read by it
    item->Put("Position", std::int32_t{0});
    // The library's own directory need not be this program's.
    item->Put("source", files.FullPath(attachment.file));
    item->Put("Name", attachment.displayName);
  }
}

}  // namespace quillon
