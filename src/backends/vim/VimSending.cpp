// Messages that are sent.
#include <string>
#include <vector>

#include "backends/OutgoingFiles.h"
#include "backends/RecipientParts.h"
#include "backends/vim/VimBackEnd.h"
#include "backends/vim/VimFailure.h"
#include "backends/vim/VimMessage.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "mail/OutgoingText.h"

namespace quillon {

namespace {

constexpr const char* kMailType = "VIM_MAIL";
constexpr const char* kNoSubject = "Error sending mail (VIMSetMessageHeader - Subject)";
constexpr const char* kNoOption = "Error sending mail (VIMSetMessageHeader - Certify)";

constexpr std::int16_t kNormal = 3;           // of the property Importance
constexpr std::int16_t kReportOfFailure = 1;  // of the property DeliveryReport; 2 and 3: of both

constexpr std::uint32_t kLowPriority = 0;
constexpr std::uint32_t kHighPriority = 2;

void SetRecipients(Vim& library, const VimMessage& message, vim::Selector recipientClass,
                   const std::vector<std::string>& list) {
  for (const auto& text : list) {
    const auto [name, address] = SplitRecipient(text);
    CheckVim(library.SetMessageRecipient(message.Handle(), recipientClass, {name, address}),
             "Bad address=" + text + " (VIMSetMessageRecipient)");
  }
}

void SetOptions(Vim& library, const VimMessage& message, const MailRequest& request) {
  const auto& instance = request.instance;
  const auto set = [&](vim::Selector attribute, bool value) {
    CheckVim(library.SetMessageHeaderFlag(message.Handle(), attribute, value), kNoOption);
  };
  set(vim::kSave, true);
  set(vim::kDeliveryReport, instance.deliveryReport > kReportOfFailure);
  set(vim::kNondeliveryReport, instance.deliveryReport >= kReportOfFailure);
  set(vim::kReturnReceipt, request.shared.message.certify != kFalse);
  if (instance.importance == kNormal) return;
  CheckVim(
      library.SetMessageHeaderNumber(message.Handle(), vim::kPriority,
                                     instance.importance < kNormal ? kHighPriority : kLowPriority),
      kNoOption);
}

const char* SendFailure(bool isNotes, bool hasFiles) {
  if (!isNotes) return "Error sending mail (VIMSendMail)";
  return hasFiles ? "Error sending mail (SMISendDocuments)"
                  : "Error sending mail (SMIAddressAndSend)";
}

}  // namespace

MailResult VimBackEnd::Send(MailRequest& request) {
  return Run(request, [&] { SendMessage(request); });
}

MailResult VimBackEnd::Post(MailRequest& request) {
  const auto& message = request.shared.message;
  if (message.subject.empty() && OutgoingText(message).empty())
    throw ServerError(error_code::kDataMissing);
  return Send(request);
}

void VimBackEnd::SendMessage(MailRequest& request) {
  sessions_.OpenOnDemand(request);
  const auto& source = request.shared.message;
  const OutgoingFiles files(ports_.files, request);
  auto& library = ports_.library;
  vim::Handle handle = 0;
  CheckVim(library.CreateMessage(VimSessions::HandleOf(request.instance), kMailType, handle),
           "Error creating message (VIMCreateMessage)");
  VimMessage message(library, handle);
  SetRecipients(library, message, vim::kTo, source.to);
  SetRecipients(library, message, vim::kCc, source.cc);
  SetRecipients(library, message, vim::kBcc, source.bcc);
  CheckVim(library.SetMessageHeaderText(handle, vim::kSubject, source.subject), kNoSubject);
  SetOptions(library, message, request);
  CheckVim(library.SetMessageItemText(handle, OutgoingText(source)),
           "Error sending mail (VIMSetMessageItem - Message)");
  for (const auto& attachment : files.List()) {
    // The library's own directory need not be this program's.
    const auto& name = attachment.displayName;
    CheckVim(library.SetMessageItemFile(handle, name, ports_.files.FullPath(attachment.file)),
             "Error sending mail (VIMSetMessageItem - Attachment " + name + ")");
  }
  CheckVim(message.Send(), SendFailure(sessions_.Product() == vim::kNotes, !files.List().empty()));
}

}  // namespace quillon
