// Item access: the loaded message (or the one being composed), and the header at messageIndex.
#include "codec/HeaderBlock.h"
#include "codec/WebForm.h"
#include "core/Text.h"
#include "mail/CurrentHeader.h"
#include "server/ErrorTable.h"
#include "server/MessageItems.h"
#include "server/Server.h"

namespace quillon {

namespace {

constexpr const char* kItemSeparator = ", ";

}  // namespace

const HeaderRecord& Server::CurrentHeader() const {
  return quillon::CurrentHeader(environment_.shared, state_);
}

std::vector<std::string> Server::GetMessageItems(std::int16_t itemType) {
  return frame_.Run("GetMessageItems", MemberKind::Method,
                    [&] { return ItemsOfMessage(environment_.shared.message, itemType); });
}

std::string Server::GetMessageItemString(std::int16_t itemType) {
  return frame_.Run("GetMessageItemString", MemberKind::Method, [&] {
    return Join(ItemsOfMessage(environment_.shared.message, itemType), kItemSeparator);
  });
}

std::int32_t Server::GetMessageItemCount(std::int16_t itemType) {
  return frame_.Run("GetMessageItemCount", MemberKind::Method, [&] {
    return static_cast<std::int32_t>(ItemsOfMessage(environment_.shared.message, itemType).size());
  });
}

Value Server::GetMessageItem(const Value& theItem, std::int32_t itemIndex) {
  return frame_.Run("GetMessageItem", MemberKind::Method, [&]() -> Value {
    auto items = ItemsOfMessage(environment_.shared.message, ToInt32(theItem));
    if (itemIndex < 0 || static_cast<std::size_t>(itemIndex) >= items.size()) {
      throw ServerError(error_code::kInvalidValue, "Invalid parameter.");
    }
    return std::move(items[static_cast<std::size_t>(itemIndex)]);
  });
}

std::vector<std::string> Server::GetHeaderItems(std::int16_t itemType) {
  return frame_.Run("GetHeaderItems", MemberKind::Method,
                    [&] { return ItemsOfHeader(CurrentHeader(), itemType); });
}

std::string Server::GetHeaderItemString(std::int16_t itemType) {
  return frame_.Run("GetHeaderItemString", MemberKind::Method,
                    [&] { return Join(ItemsOfHeader(CurrentHeader(), itemType), kItemSeparator); });
}

std::vector<std::string> Server::MessageItems(std::int16_t itemType) {
  return frame_.Run("MessageItems", MemberKind::Property,
                    [&] { return ItemsOfMessage(environment_.shared.message, itemType); });
}

std::vector<std::string> Server::HeaderItems(std::int16_t itemType) {
  return frame_.Run("HeaderItems", MemberKind::Property,
                    [&] { return ItemsOfHeader(CurrentHeader(), itemType); });
}

void Server::ClearMessageItems(std::int16_t itemType) {
  frame_.Run("ClearMessageItems", MemberKind::Procedure,
             [&] { ClearItems(environment_.shared.message, itemType); });
}

std::string Server::GetHeaderValueByName(const std::string& theField) {
  return frame_.Run("GetHeaderValueByName", MemberKind::Method, [&] {
    return FindHeaderValue(environment_.shared.message.rawHeaders, theField);
  });
}

std::string Server::GetWebFormValue(const std::string& fieldName) {
  return frame_.Run("GetWebFormValue", MemberKind::Method, [&] {
    WebFormFields fields;
    ParseWebForm(environment_.shared.message.body, environment_.codePage, fields);
    return fields[UpperAscii(Trim(fieldName))];
  });
}

}  // namespace quillon
