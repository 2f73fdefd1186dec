#include "backends/mhs/MhsRecords.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "backends/RecipientParts.h"
#include "backends/mhs/SmfAddress.h"
#include "backends/mhs/SmfDate.h"
#include "codec/DateFormat.h"
#include "core/Text.h"

namespace quillon {

namespace {

std::string DateOf(const SmfMessage& message) {
  auto date = SmfValue(message, "Date");
  return date.empty() ? SmfValue(message, "Date-posted") : date;
}

std::string DateText(const std::string& date, const std::string& format) {
  const auto parsed = UpperAscii(format) == "NATIVE" ? std::nullopt : ParseSmfDate(date);
  return parsed ? FormatReceivedDate(*parsed, format) : date;
}

// Grows with time; not all numbers stand for one.
std::int64_t Order(const DateTime& date) {
  std::int64_t order = date.year;
  for (const int part : {date.month, date.day, date.hour, date.minute, date.second}) {
    order = order * 64 + part;
  }
  return order;
}

std::int64_t Arrival(const MhsHead& head) {
  const auto time = head.arrived.value_or(LocalTime());
  return Order({time.year, time.month, time.day, time.hour, time.minute, time.second});
}

// Words, or in older programs a number.
std::int16_t PriorityOf(const SmfMessage& message) {
  auto text = SmfValue(message, "Importance");
  if (text.empty()) text = SmfValue(message, "Priority");
  if (EqualsIgnoreCase(text, "High")) return 1;
  if (EqualsIgnoreCase(text, "Low")) return 5;
  const bool isNumber = text.size() == 1 && text[0] >= '1' && text[0] <= '5';
  return static_cast<std::int16_t>(isNumber ? text[0] - '0' : 3);
}

using Recipients = std::vector<RecipientParts>;

Recipients AddressesOf(const SmfMessage& message, std::string_view field,
                       const CodePage& codePage) {
  Recipients all;
  for (const auto& candidate : message.fields) {
    if (!EqualsIgnoreCase(candidate.name, field)) continue;
    for (const auto& [name, address] : ParseSmfAddresses(candidate.value)) {
      all.push_back({codePage.ToText(name), codePage.ToText(address)});
    }
  }
  return all;
}

RecipientParts SenderOf(const SmfMessage& message, const CodePage& codePage) {
  const auto senders = AddressesOf(message, "From", codePage);
  return senders.empty() ? RecipientParts() : senders.front();
}

std::vector<std::string> Shown(const Recipients& recipients) {
  std::vector<std::string> texts;
  texts.reserve(recipients.size());
  for (const auto& [name, address] : recipients) {
    texts.push_back(name.empty() ? address : FormatRecipient(name, address));
  }
  return texts;
}

// For a list that commas separate.
std::string Listed(const Recipients& recipients) {
  Recipients listed;
  listed.reserve(recipients.size());
  for (const auto& [name, address] : recipients) {
    const bool hasComma = name.find(',') != std::string::npos;
    listed.push_back({hasComma ? '"' + name + '"' : name, address});
  }
  return Join(Shown(listed), ", ");
}

}  // namespace

void MhsListing::Add(const std::string& name, const MhsHead& head, bool isRead) {
  if (isRead && instance_.unreadOnly != kFalse) return;
  const auto& message = head.message;
  const auto text = [&](std::string_view field) {
    return codePage_.ToText(SmfValue(message, field));
  };
  const auto sender = SenderOf(message, codePage_);
  const auto date = DateOf(message);
  HeaderRecord record;
  record.uniqueId = name;
  record.identity = head.identity;
  record.subject = text("Subject");
  record.originator = Shown({sender}).front();
  record.replyAddress = sender.address;
  record.to = Listed(AddressesOf(message, "To", codePage_));
  record.cc = Listed(AddressesOf(message, "Cc", codePage_));
  record.dateText = codePage_.ToText(DateText(date, instance_.dateFormat));
  record.status = std::string(isRead ? kStatusRead : kStatusUnread);
  record.messageId = text("Message-id");
  record.size = std::to_string(head.size);
  record.priority = PriorityOf(message);
  const auto sent = instance_.dateSort != kFalse ? ParseSmfDate(date) : std::nullopt;
  rows_.push_back({sent ? Order(*sent) : Arrival(head), std::move(record)});
}

HeaderTable MhsListing::Take() {
  std::sort(rows_.begin(), rows_.end(), [](const Row& left, const Row& right) {
    return std::tie(left.time, left.record.uniqueId) < std::tie(right.time, right.record.uniqueId);
  });
  HeaderTable table;
  for (auto& row : rows_) {
    if (table.size() >= static_cast<std::size_t>(instance_.maximumHeaders)) break;
    row.record.number = std::to_string(table.size() + 1);
    table.push_back(std::move(row.record));
  }
  return table;
}

LoadedMessage LoadedMhsMessage(const SmfMessage& message, const std::string& dateFormat,
                               const CodePage& codePage) {
  LoadedMessage loaded;
  loaded.to = Shown(AddressesOf(message, "To", codePage));
  loaded.cc = Shown(AddressesOf(message, "Cc", codePage));
  loaded.bcc = Shown(AddressesOf(message, "Bcc", codePage));
  loaded.from = Shown({SenderOf(message, codePage)}).front();
  loaded.subject = codePage.ToText(SmfValue(message, "Subject"));
  loaded.body = codePage.ToText(message.body);
  loaded.dateText = codePage.ToText(DateText(DateOf(message), dateFormat));
  return loaded;
}

}  // namespace quillon
