#include "backends/vines/VinesMessage.h"

#include <memory>
#include <optional>
#include <utility>

#include "backends/RecipientParts.h"
#include "codec/DateFormat.h"
#include "core/ErrorCode.h"
#include "core/RecipientText.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "mail/CurrentHeader.h"
#include "mail/LoadedMessage.h"
#include "mail/OutgoingText.h"

namespace quillon {

namespace {

std::optional<DateTime> DateOf(const LocalTime& time) {
  const auto in = [](int number, int first, int last) { return number >= first && number <= last; };
  if (!in(time.year, 100, 9999) || !in(time.month, 1, 12) ||
      !in(time.day, 1, DaysInMonth(time.year, time.month)) || !in(time.hour, 0, 23) ||
      !in(time.minute, 0, 59) || !in(time.second, 0, 59)) {
    return std::nullopt;
  }
  return DateTime{time.year, time.month, time.day, time.hour, time.minute, time.second};
}

std::string DateText(const LocalTime& time, const std::string& native, const std::string& format) {
  const bool isNative = UpperAscii(format) == "NATIVE";
  const auto date = DateOf(time);
  if (!date || (isNative && !native.empty())) return native;
  return FormatReceivedDate(*date, isNative ? std::string() : format);
}

std::string SenderText(const ProviderParty& sender) {
  return sender.name.empty() ? sender.address : sender.name;
}

ProviderParty PartyOf(std::int32_t kind, const std::string& text) {
  auto [name, address] = SplitRecipient(text);
  return {kind, std::move(name), std::move(address)};
}

std::int32_t CountOf(const std::string& recipients) {
  return static_cast<std::int32_t>(SplitRecipients(recipients, ",", "<>").size());
}

}  // namespace

ProviderCall VinesCallOf(const MailRequest& request) {
  return {request.instance.session.handle, request.shared.ownerWindow};
}

std::string VinesMailboxOf(const InstanceState& instance) {
  return "VINES " + UpperAscii(instance.loginName);
}

std::string CurrentVinesMessage(const MailRequest& request) {
  const auto& header = CurrentHeader(request.shared, request.instance);
  if (request.shared.headerOrigin.mailbox != VinesMailboxOf(request.instance)) {
    throw ServerError(error_code::kNoHeaders);
  }
  return header.uniqueId;
}

HeaderRecord VinesHeaderOf(ProviderHeader header, const std::string& dateFormat) {
  HeaderRecord record;
  record.uniqueId = std::move(header.id);
  record.subject = std::move(header.subject);
  record.originator = SenderText(header.from);
  record.replyAddress = std::move(header.from.address);
  record.dateText = DateText(header.date, header.dateText, dateFormat);
  record.status = header.unread ? kStatusUnread : kStatusRead;
  record.receiptRequested = ToShortBool(header.receipt);
  if (header.bytes != 0) record.size = std::to_string(header.bytes);
  if (header.importance >= 1 && header.importance <= 5) {
    record.priority = static_cast<std::int16_t>(header.importance);
  }
  auto details = std::make_shared<MessageDetails>();
  details->type = header.type;
  details->attachments = static_cast<std::int32_t>(header.fileCount);
  details->recipients = CountOf(header.to) + CountOf(header.cc);
  record.details = std::move(details);
  record.contentType = std::move(header.type);
  record.to = std::move(header.to);
  record.cc = std::move(header.cc);
  return record;
}

ProviderMessage VinesMessageOf(const MailRequest& request, FileSystem& files,
                               const OutgoingFiles& attachments) {
  const auto& source = request.shared.message;
  const auto& instance = request.instance;
  ProviderMessage message;
  const std::pair<std::int32_t, const std::vector<std::string>&> lists[] = {
      {provider::kTo, source.to}, {provider::kCc, source.cc}, {provider::kBcc, source.bcc}};
  message.recipients.reserve(source.to.size() + source.cc.size() + source.bcc.size());
  for (const auto& [kind, list] : lists) {
    for (const auto& text : list) message.recipients.push_back(PartyOf(kind, text));
  }
  message.files.reserve(attachments.List().size());
  for (const auto& file : attachments.List()) {
    // The library's own directory need not be this program's.
    message.files.push_back({files.FullPath(file.file), file.displayName});
  }
  message.subject = source.subject;
  message.text = OutgoingText(source);
  message.type = instance.messageType;
  message.from = PartyOf(0, source.from);
  message.replyTo = PartyOf(0, source.replyTo);
  message.importance = instance.importance;
  message.deliveryPriority = instance.deliveryPriority;
  message.sensitivity = instance.sensitivity;
  message.deliveryReport = instance.deliveryReport;
  message.receipt = source.certify != kFalse;
  message.sign = instance.signedMessage != kFalse;
  message.encrypt = instance.encrypt != kFalse;
  message.preventCopying = instance.preventCopying != kFalse;
  return message;
}

void TakeVinesMessage(MailRequest& request, ProviderMessage message, ReceivedFiles& files) {
  LoadedMessage loaded;
  for (const auto& recipient : message.recipients) {
    auto& list = recipient.kind == provider::kBcc  ? loaded.bcc
                 : recipient.kind == provider::kCc ? loaded.cc
                                                   : loaded.to;
    list.push_back(recipient.name.empty() ? recipient.address
                                          : FormatRecipient(recipient.name, recipient.address));
  }
  loaded.from = SenderText(message.from);
  loaded.subject = std::move(message.subject);
  loaded.body = std::move(message.text);
  loaded.dateText = DateText(message.date, message.dateText, request.instance.dateFormat);
  loaded.attachments = files.Keep();
  MakeCurrent(request.shared.message, std::move(loaded));
  request.shared.message.replyTo = FormatRecipient(message.replyTo.name, message.replyTo.address);
  request.shared.message.certify = ToShortBool(message.receipt);
}

}  // namespace quillon
