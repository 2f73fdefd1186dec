#include "codec/HeaderField.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "codec/HeaderDate.h"
#include "core/Text.h"

namespace quillon {
namespace {

constexpr std::string_view kWhiteSpace = " \t";

std::string_view TrimWhiteSpace(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

// What to do with a field of a known name.
enum class Rule {
  kReplace,
  kAppend,
  kOriginator,  // appends, and makes the whole originator the reply address
  kReplyTo,     // appends, but only while the target is empty
  kReceipt,
  kPriority,
};

struct FieldRow {
  std::string_view name;
  Rule rule;
  std::string HeaderRecord::*target;
};

constexpr std::array<FieldRow, 17> kFields = {{
    {"DATE", Rule::kAppend, &HeaderRecord::dateText},
    {"SUBJECT", Rule::kReplace, &HeaderRecord::subject},
    {"STATUS", Rule::kReplace, &HeaderRecord::status},
    {"TO", Rule::kAppend, &HeaderRecord::to},
    {"CC", Rule::kAppend, &HeaderRecord::cc},
    {"FROM", Rule::kOriginator, &HeaderRecord::originator},
    {"CONTENT-LENGTH", Rule::kReplace, &HeaderRecord::contentLength},
    {"CONTENT-TRANSFER-ENCODING", Rule::kReplace, &HeaderRecord::transferEncoding},
    {"CONTENT-TYPE", Rule::kAppend, &HeaderRecord::contentType},
    {"MESSAGE-ID", Rule::kAppend, &HeaderRecord::messageId},
    {"X-UIDL", Rule::kAppend, &HeaderRecord::uniqueId},
    {"RETURN-PATH", Rule::kAppend, &HeaderRecord::replyAddress},
    {"REPLY-TO", Rule::kReplyTo, &HeaderRecord::replyAddress},
    {"X-MAILER", Rule::kAppend, &HeaderRecord::mailer},
    {"RETURN-RECEIPT-TO", Rule::kReceipt, nullptr},
    {"DISPOSITION-NOTIFICATION-TO", Rule::kReceipt, nullptr},
    {"X-PRIORITY", Rule::kPriority, nullptr},
}};

// 1 to 5 from the number that the text begins with (0 when there is none); no value when it is too
// large to read.
std::optional<int16_t> PriorityOf(std::string_view text) {
  text = text.substr(0, text.find(' '));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  if (!text.empty() && (text[0] == '.' || (text[0] >= '0' && text[0] <= '9'))) {
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec == std::errc::result_out_of_range) return std::nullopt;
  }
  return static_cast<int16_t>(std::clamp(negative ? -number : number, 1.0, 5.0));
}

const FieldRow* FindField(std::string_view fieldName) {
  const std::string_view name = TrimWhiteSpace(fieldName);
  const auto* const row = std::find_if(kFields.begin(), kFields.end(), [&](const FieldRow& field) {
    return EqualsIgnoreCase(field.name, name);
  });
  return row == kFields.end() ? nullptr : row;
}

void Put(std::string& target, std::string_view value, bool append) {
  if (append) {
    target += value;
  } else {
    target = value;
  }
}

// `replyIsOriginator`: the reply address is known to be the same as the originator, so that a fold
// of thousands of lines need not copy the whole for each.
void StoreField(HeaderRecord& record, std::string_view fieldName, std::string_view value,
                bool append, bool replyIsOriginator) {
  const FieldRow* const row = FindField(fieldName);
  if (row == nullptr) return;
  switch (row->rule) {
    case Rule::kReplace:
      record.*row->target = value;
      break;
    case Rule::kAppend:
      Put(record.*row->target, value, append);
      break;
    case Rule::kOriginator:
      Put(record.originator, value, append);
      if (append && replyIsOriginator) {
        record.replyAddress += value;
      } else {
        record.replyAddress = record.originator;
      }
      break;
    case Rule::kReplyTo:
      if (TrimWhiteSpace(record.replyAddress).empty()) Put(record.replyAddress, value, append);
      break;
    case Rule::kReceipt:
      record.receiptRequested = kTrue;
      break;
    case Rule::kPriority:
      if (const std::string_view text = TrimWhiteSpace(value); !text.empty()) {
        record.priority = PriorityOf(text).value_or(record.priority);
      }
      break;
  }
}

}  // namespace

std::string_view StripLineEnd(std::string_view text) {
  if (text.ends_with("\r\n")) return text.substr(0, text.size() - 2);
  if (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

void StoreHeaderField(HeaderTable& table, size_t index, std::string_view fieldName,
                      std::string_view value, ShortBool isContinuation) {
  if (index >= table.size()) return;
  StoreField(table[index], fieldName, value, isContinuation != kFalse, false);
}

void HeaderLineReader::Store(HeaderTable& table, size_t index, std::string_view line,
                             std::string_view dateFormat) {
  std::string_view value = line;
  const bool continues = !line.empty() && kWhiteSpace.find(line.front()) != std::string_view::npos;
  if (!continues) {
    const size_t colon = line.find(':');
    fieldName_ = colon == std::string_view::npos ? "" : UpperAscii(line.substr(0, colon));
    value = colon == std::string_view::npos ? "" : line.substr(colon + 1);
  }
  if (index >= table.size() || fieldName_.empty()) return;
  value = TrimWhiteSpace(StripLineEnd(value));
  // Not a fold: it stands where the empty line should, or adds nothing.
  if (continues && value.empty()) return;
  std::string date;
  if (TrimWhiteSpace(fieldName_) == "DATE") {
    date = ConvertHeaderDate(value, dateFormat);
    value = date;
  }
  StoreField(table[index], fieldName_, value, continues, continues);
}

}  // namespace quillon
