#include "server/MessageItems.h"

#include <array>

#include "codec/HtmlFacts.h"
#include "core/RecipientText.h"
#include "core/ServerError.h"
#include "server/ErrorTable.h"

namespace quillon {

namespace {

using Items = std::vector<std::string>;

[[noreturn]] void UnknownType() {
  throw ServerError(error_code::kInvalidValue, "Invalid parameter.");
}

Items TextItem(const std::string& text) {
  return text.empty() ? Items{} : Items{text};
}

// The recipients of a received header field, which are always separated by commas.
Items AddressItems(const std::string& field) {
  return SplitRecipients(field, ",", "<>");
}

template <typename Read>
Items ItemsOfFiles(const MessageBuffers& message, Read read) {
  Items items;
  items.reserve(message.attachments.size());
  for (const auto& attachment : message.attachments) items.push_back(read(attachment));
  return items;
}

template <std::string Attachment::*Field>
Items AttachmentItems(const MessageBuffers& message) {
  return ItemsOfFiles(message, [](const Attachment& one) { return one.*Field; });
}

template <std::string PartLabel::*Field>
Items LabelItems(const MessageBuffers& message) {
  return ItemsOfFiles(message, [](const Attachment& one) { return one.label.*Field; });
}

struct MessageItemRow {
  std::int32_t type;
  Items (*read)(const MessageBuffers&);
};

constexpr std::array kMessageItems{
    MessageItemRow{message_item::kTo, [](const MessageBuffers& m) { return m.to; }},
    MessageItemRow{message_item::kCc, [](const MessageBuffers& m) { return m.cc; }},
    MessageItemRow{message_item::kBcc, [](const MessageBuffers& m) { return m.bcc; }},
    MessageItemRow{message_item::kSubject,
                   [](const MessageBuffers& m) { return TextItem(m.subject); }},
    MessageItemRow{message_item::kMessage,
                   [](const MessageBuffers& m) { return TextItem(m.body); }},
    MessageItemRow{message_item::kAttachments, AttachmentItems<&Attachment::file>},
    MessageItemRow{message_item::kAttachmentNames, AttachmentItems<&Attachment::displayName>},
    MessageItemRow{message_item::kOriginator,
                   [](const MessageBuffers& m) { return TextItem(m.from); }},
    MessageItemRow{message_item::kDateSent,
                   [](const MessageBuffers& m) { return TextItem(m.dateSent); }},
    MessageItemRow{message_item::kRefusedRecipients,
                   [](const MessageBuffers& m) { return m.refusedRecipients; }},
    MessageItemRow{message_item::kReplyTo,
                   [](const MessageBuffers& m) { return TextItem(m.replyTo); }},
    MessageItemRow{message_item::kAttachmentTypes, LabelItems<&PartLabel::contentType>},
    MessageItemRow{message_item::kAttachmentContentIds, LabelItems<&PartLabel::contentId>},
    MessageItemRow{message_item::kHtmlMessage,
                   [](const MessageBuffers& m) { return TextItem(HtmlOf(m)); }},
    MessageItemRow{message_item::kHtmlContentIds,
                   [](const MessageBuffers& m) { return ContentIdsIn(HtmlOf(m)); }},
    MessageItemRow{message_item::kAuxiliaryText,
                   [](const MessageBuffers& m) { return TextItem(m.auxiliaryText); }},
};

struct HeaderItemRow {
  std::int32_t type;
  Items (*read)(const HeaderRecord&);
};

template <std::string HeaderRecord::*Field>
Items FieldItem(const HeaderRecord& header) {
  return TextItem(header.*Field);
}

template <std::string MessageDetails::*Field>
Items DetailText(const HeaderRecord& header) {
  return header.details != nullptr ? TextItem((*header.details).*Field) : Items{};
}

template <auto Field>
Items DetailNumber(const HeaderRecord& header) {
  return header.details != nullptr ? Items{std::to_string((*header.details).*Field)} : Items{};
}

constexpr std::array kHeaderItems{
    HeaderItemRow{1, [](const HeaderRecord& h) { return AddressItems(h.to); }},
    HeaderItemRow{2, [](const HeaderRecord& h) { return AddressItems(h.cc); }},
    HeaderItemRow{4, FieldItem<&HeaderRecord::subject>},
    HeaderItemRow{9, FieldItem<&HeaderRecord::originator>},
    HeaderItemRow{10, FieldItem<&HeaderRecord::dateText>},
    HeaderItemRow{20, FieldItem<&HeaderRecord::number>},
    HeaderItemRow{21, FieldItem<&HeaderRecord::messageId>},
    HeaderItemRow{22, FieldItem<&HeaderRecord::uniqueId>},
    HeaderItemRow{23, FieldItem<&HeaderRecord::status>},
    HeaderItemRow{24, FieldItem<&HeaderRecord::replyAddress>},
    HeaderItemRow{25, [](const HeaderRecord& h) { return Items{std::to_string(h.priority)}; }},
    HeaderItemRow{
        26,
        [](const HeaderRecord& h) { return TextItem(h.size.empty() ? h.contentLength : h.size); }},
    HeaderItemRow{27,
                  [](const HeaderRecord& h) { return Items{std::to_string(h.receiptRequested)}; }},
    HeaderItemRow{28, FieldItem<&HeaderRecord::contentType>},
    HeaderItemRow{29, FieldItem<&HeaderRecord::mailer>},
    HeaderItemRow{30, DetailText<&MessageDetails::type>},
    HeaderItemRow{31, DetailText<&MessageDetails::conversationTopic>},
    HeaderItemRow{32, DetailText<&MessageDetails::conversationIndex>},
    HeaderItemRow{33, DetailNumber<&MessageDetails::deliveryReport>},
    HeaderItemRow{34, DetailNumber<&MessageDetails::attachments>},
    HeaderItemRow{35, DetailNumber<&MessageDetails::recipients>},
};

template <typename Rows, typename Source>
Items ReadItems(const Rows& rows, const Source& source, std::int32_t itemType) {
  for (const auto& row : rows) {
    if (row.type == itemType) return row.read(source);
  }
  UnknownType();
}

}  // namespace

std::vector<std::string> ItemsOfMessage(const MessageBuffers& message, std::int32_t itemType) {
  return ReadItems(kMessageItems, message, itemType);
}

std::vector<std::string> ItemsOfHeader(const HeaderRecord& header, std::int32_t itemType) {
  return ReadItems(kHeaderItems, header, itemType);
}

const std::string& HtmlOf(const MessageBuffers& message) noexcept {
  return message.html.empty() ? message.receivedHtml : message.html;
}

void ClearItems(MessageBuffers& message, std::int32_t itemType) {
  switch (itemType) {
    case message_item::kTo:
      message.to.clear();
      break;
    case message_item::kCc:
      message.cc.clear();
      break;
    case message_item::kBcc:
      message.bcc.clear();
      break;
    case message_item::kSubject:
      message.subject.clear();
      break;
    case message_item::kMessage:
      message.body.clear();
      break;
    case message_item::kAttachments:
      message.attachments.clear();
      break;
    case message_item::kAuxiliaryText:
      message.auxiliaryText.clear();
      break;
    default:
      UnknownType();
  }
}

void ClearMessage(MessageBuffers& message) {
  for (const auto type :
       {message_item::kTo, message_item::kCc, message_item::kBcc, message_item::kSubject,
        message_item::kMessage, message_item::kAttachments, message_item::kAuxiliaryText}) {
    ClearItems(message, type);
  }
  message.html.clear();
  message.receivedHtml.clear();
  message.alternatives.clear();
  message.xHeaders.clear();
  message.headers.clear();
  message.refusedRecipients.clear();
}

}  // namespace quillon
