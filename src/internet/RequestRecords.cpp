#include "internet/RequestRecords.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "core/ErrorCode.h"
#include "core/RecipientText.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/Address.h"
#include "internet/PopReply.h"
#include "mail/CurrentHeader.h"
#include "mail/LoadedMessage.h"

namespace quillon {

namespace {

SessionSettings TimesOf(const MailRequest& request) {
  const auto& internet = request.shared.internet;
  SessionSettings settings;
  settings.timeoutConnect = static_cast<TickCount>(internet.timeoutConnect);
  settings.timeoutProtocol = static_cast<TickCount>(internet.timeoutProtocol);
  settings.timeoutSend = static_cast<TickCount>(internet.TimeoutSend());
  return settings;
}

}  // namespace

SmtpSettings SmtpSettingsOf(const MailRequest& request, const CodePage& codePage) {
  SmtpSettings settings;
  static_cast<SessionSettings&>(settings) = TimesOf(request);
  settings.host = codePage.ToBytes(request.instance.smtpServer);
  settings.port = request.shared.internet.smtpPort;
  settings.sender = BareAddress(codePage.ToBytes(request.shared.message.from));
  settings.greetWithHelo = request.shared.switches.greetWithHelo;
  return settings;
}

PopSettings PopSettingsOf(const MailRequest& request, const CodePage& codePage) {
  PopSettings settings;
  static_cast<SessionSettings&>(settings) = TimesOf(request);
  settings.host = codePage.ToBytes(request.instance.postOffice);
  settings.port = request.shared.internet.popPort;
  settings.loginName = codePage.ToBytes(request.instance.loginName);
  settings.password = codePage.ToBytes(request.instance.password);
  return settings;
}

OutgoingMessage MessageOf(const MailRequest& request, const InternetProduct& product,
                          const CodePage& codePage, const std::optional<TextEncoder>& encoder) {
  const auto& source = request.shared.message;
  const auto toWire = [&](const std::string& text) {
    return encoder ? text : codePage.ToBytes(text);
  };
  const auto toBytes = [&](const std::vector<std::string>& texts) {
    std::vector<std::string> bytes;
    bytes.reserve(texts.size());
    for (const auto& text : texts) bytes.push_back(toWire(text));
    return bytes;
  };
  OutgoingMessage message;
  message.encoder = encoder;
  message.from = toWire(source.from);
  message.whoTo = toBytes(source.to);
  message.cc = toBytes(source.cc);
  message.bcc = toBytes(source.bcc);
  message.subject = toWire(source.subject);
  message.body = toWire(source.body);
  message.replyTo = toWire(source.replyTo);
  message.charset = codePage.ToBytes(request.shared.internet.characterSet);
  message.xMailer = toWire(request.instance.xMailer);
  for (const auto& header : source.xHeaders) {
    message.xHeaders.push_back({toWire(header.name), toWire(header.value)});
  }
  for (const auto& header : source.headers) {
    message.headers.push_back({header.name, toWire(header.value)});
  }
  for (const auto& alternative : source.alternatives) {
    message.alternatives.push_back({alternative.file, toWire(alternative.contentType)});
  }
  message.attachments = source.attachments;
  message.attachmentEncoding = request.instance.attachmentEncoding;
  message.zipPassword = request.instance.zipPassword;
  message.importance = request.instance.importance;
  message.deliveryReport = request.instance.deliveryReport;
  message.certify = source.certify != kFalse;
  message.utcOffset = request.instance.utcOffset;
  message.version = product.version;
  message.specialBuild = product.specialBuild;
  return message;
}

std::string MailboxOf(const PopSettings& settings) {
  return settings.loginName + "@" + UpperAscii(settings.host);
}

MessageKey CurrentMessage(const MailRequest& request, const PopSettings& settings,
                          const CodePage& codePage) {
  const auto& record = CurrentHeader(request.shared, request.instance);
  const auto& origin = request.shared.headerOrigin;
  if (origin.mailbox != MailboxOf(settings)) throw ServerError(error_code::kNoHeaders);
  std::string_view text = record.number;
  const auto number = TakeNumber(text);
  if (!number || *number > std::numeric_limits<std::uint32_t>::max())
    throw ServerError(error_code::kBadMessageIndex);
  MessageKey key{static_cast<std::uint32_t>(*number), origin.session, {}, record.identity};
  // What a header says of identifiers is the sender's word.
  if (key.identity == 0) key.uniqueId = codePage.ToBytes(record.uniqueId);
  return key;
}

void StoreMessage(SharedState& shared, MessageCollector& collector, const CodePage& codePage) {
  const auto& fields = collector.Fields();
  LoadedMessage loaded;
  loaded.to = SplitRecipients(codePage.ToText(fields.to), ",", "<>");
  loaded.cc = SplitRecipients(codePage.ToText(fields.cc), ",", "<>");
  loaded.attachments = std::move(collector.Message().attachments);
  loaded.from = codePage.ToText(fields.originator);
  loaded.subject = codePage.ToText(fields.subject);
  loaded.dateText = codePage.ToText(fields.dateText);
  loaded.rawHeaders = codePage.ToText(collector.RawHeaders());
  loaded.body = codePage.ToText(collector.Message().body);
  MakeCurrent(shared.message, std::move(loaded));
}

HeaderTable TextTable(HeaderTable table, const CodePage& codePage) {
  const auto isAscii = [](char c) { return (static_cast<unsigned char>(c) & 0x80U) == 0; };
  for (auto& record : table) {
    for (const auto member : kHeaderTexts) {
      auto& text = record.*member;
      if (!std::all_of(text.begin(), text.end(), isAscii)) text = codePage.ToText(text);
    }
  }
  return table;
}

}  // namespace quillon
