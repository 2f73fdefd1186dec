#include "internet/RequestRecords.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/EncodedWord.h"
#include "codec/HtmlFacts.h"
#include "core/ErrorCode.h"
#include "core/RecipientText.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/Address.h"
#include "internet/PartialMessage.h"
#include "internet/PopReply.h"
#include "mail/CurrentHeader.h"
#include "mail/LoadedMessage.h"
#include "mail/OutgoingText.h"

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

// What needs no reading: most fields of most messages.
bool IsPlainAscii(std::string_view bytes) {
  const auto isAscii = [](char c) { return (static_cast<unsigned char>(c) & 0x80U) == 0; };
  return std::all_of(bytes.begin(), bytes.end(), isAscii) &&
         bytes.find("=?") == std::string_view::npos;
}

// The server's identifiers go back to it as the bytes that they were.
std::string FieldText(std::string HeaderRecord::*member, const std::string& bytes,
                      const HeaderReading& reading) {
  using R = HeaderRecord;
  if (reading.raw || member == &R::uniqueId) return reading.reader.Ansi(bytes);
  if (member == &R::subject || member == &R::mailer) {
    return DecodeEncodedWords(bytes, reading.reader);
  }
  if (member == &R::originator || member == &R::to || member == &R::cc ||
      member == &R::replyAddress) {
    return DecodeAddresses(bytes, reading.reader);
  }
  return reading.reader.Unnamed(bytes);
}

void MakeText(HeaderRecord& record, const HeaderReading& reading) {
  for (const auto member : kHeaderTexts) {
    auto& text = record.*member;
    if (!IsPlainAscii(text)) text = FieldText(member, text, reading);
  }
}

MessageKey KeyOf(const HeaderRecord& record, const HeaderOrigin& origin, const CodePage& codePage) {
  std::string_view text = record.number;
  const auto number = TakeNumber(text);
  if (!number || *number > std::numeric_limits<std::uint32_t>::max())
    throw ServerError(error_code::kBadMessageIndex);
  MessageKey key{static_cast<std::uint32_t>(*number), origin.session, {}, record.identity};
  // What a header says of identifiers is the sender's word.
  if (key.identity == 0) key.uniqueId = codePage.ToBytes(record.uniqueId);
  return key;
}

// Those that the HTML shows become parts of it: what the client has put there, and of what has been
// received whatever the HTML refers to.
void AddFiles(OutgoingMessage& message, const MessageBuffers& source) {
  const auto shown = ContentIdsIn(source.html);
  const std::set<std::string> ids(shown.begin(), shown.end());
  for (auto file : source.attachments) {
    const auto& id = file.label.contentId;
    file.isInline = !source.html.empty() && (file.isInline || ids.contains(id));
    auto& files = file.isInline ? message.inlineFiles : message.attachments;
    files.push_back(std::move(file));
  }
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
  message.body = toWire(OutgoingText(source));
  message.html = source.html;
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
  AddFiles(message, source);
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
  return KeyOf(record, origin, codePage);
}

std::vector<MessageKey> PartsOfCurrent(const MailRequest& request, const TextReader& reader,
                                       const CodePage& codePage) {
  const auto& shared = request.shared;
  const auto parts = PartsOf(shared.headers, CurrentHeader(shared, request.instance), reader);
  std::vector<MessageKey> keys;
  keys.reserve(parts.size());
  for (const auto* const part : parts) keys.push_back(KeyOf(*part, shared.headerOrigin, codePage));
  return keys;
}

void StoreMessage(SharedState& shared, MessageCollector& collector, const HeaderReading& reading) {
  auto fields = collector.Fields();
  MakeText(fields, reading);
  LoadedMessage loaded;
  loaded.to = SplitRecipients(fields.to, ",", "<>");
  loaded.cc = SplitRecipients(fields.cc, ",", "<>");
  loaded.attachments = std::move(collector.Message().attachments);
  loaded.from = std::move(fields.originator);
  loaded.subject = std::move(fields.subject);
  loaded.dateText = std::move(fields.dateText);
  const auto& reader = reading.reader;
  const auto& header = collector.RawHeaders();
  loaded.rawHeaders = reading.raw ? reader.Ansi(header) : reader.Unnamed(header);
  loaded.body = std::move(collector.Message().body);
  loaded.html = std::move(collector.Message().html);
  MakeCurrent(shared.message, std::move(loaded));
}

HeaderTable TextTable(HeaderTable table, const HeaderReading& reading) {
  for (auto& record : table) MakeText(record, reading);
  return table;
}

}  // namespace quillon
