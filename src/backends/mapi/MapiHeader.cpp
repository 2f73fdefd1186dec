#include "backends/mapi/MapiHeader.h"

#include <utility>

#include "backends/RecipientParts.h"
#include "codec/DateFormat.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "core/WholeFile.h"
#include "mail/CurrentHeader.h"
#include "mail/LoadedMessage.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

namespace {

std::string DateText(const std::string& date, const std::string& format) {
  if (UpperAscii(format) == "NATIVE") return date;
  const auto parsed = ParseDate(date);
  return parsed ? FormatReceivedDate(*parsed, format) : date;
}

std::string OriginatorText(const MapiRecipient& originator, MailSystemId system) {
  if (system == mail_system::kCserve) return FormatRecipient(originator.name, originator.address);
  return originator.name.empty() ? originator.address : originator.name;
}

// Removes the files that the library has made for the message.
class LibraryFiles {
 public:
  LibraryFiles(FileSystem& files, const MapiMessage& message) : files_(files), message_(message) {}
  LibraryFiles(const LibraryFiles&) = delete;
  LibraryFiles& operator=(const LibraryFiles&) = delete;
  ~LibraryFiles() {
    for (const auto& file : message_.files) files_.RemoveFile(file.path);
  }

 private:
  FileSystem& files_;
  const MapiMessage& message_;
};

}  // namespace

std::string MapiMailboxOf(const InstanceState& instance) {
  return "MAPI " + UpperAscii(instance.loginName);
}

std::string CurrentMapiMessage(const MailRequest& request) {
  const auto& header = CurrentHeader(request.shared, request.instance);
  if (request.shared.headerOrigin.mailbox != MapiMailboxOf(request.instance)) {
    throw ServerError(error_code::kNoHeaders);
  }
  return header.uniqueId;
}

HeaderRecord HeaderOf(const MapiMessage& envelope, const InstanceState& instance) {
  HeaderRecord record;
  record.subject = envelope.subject;
  record.originator = OriginatorText(envelope.originator, instance.mailSystem);
  record.replyAddress = envelope.originator.address;
  record.dateText = DateText(envelope.dateReceived, instance.dateFormat);
  record.status = (envelope.flags & mapi::kUnread) != 0 ? kStatusUnread : kStatusRead;
  record.receiptRequested = ToShortBool((envelope.flags & mapi::kReceiptRequested) != 0);
  return record;
}

bool TakeMapiMessage(FileSystem& files, MailRequest& request, const MapiMessage& message) {
  const LibraryFiles leftOver(files, message);
  const auto& instance = request.instance;
  ReceivedFiles received(files, request);
  for (const auto& file : message.files) {
    const auto name = file.name.empty() ? std::string(FileNameOf(file.path)) : file.name;
    if (instance.suppressAttachments != kFalse) break;
    if (!received.Copy(file.path, name)) return false;
  }
  LoadedMessage loaded;
  for (const auto& recipient : message.recipients) {
    auto& list = recipient.recipientClass == mapi::kBcc  ? loaded.bcc
                 : recipient.recipientClass == mapi::kCc ? loaded.cc
                                                         : loaded.to;
    list.push_back(FormatRecipient(recipient.name, recipient.address));
  }
  loaded.from = OriginatorText(message.originator, instance.mailSystem);
  loaded.subject = message.subject;
  loaded.body = message.noteText;
  loaded.dateText = DateText(message.dateReceived, instance.dateFormat);
  loaded.attachments = received.Keep();
  MakeCurrent(request.shared.message, std::move(loaded));
  request.shared.message.certify = ToShortBool((message.flags & mapi::kReceiptRequested) != 0);
  return true;
}

}  // namespace quillon
