// Messages of Simple MAPI in the layout of the library, and the other way round.
#pragma once

#include <windows.h>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/win32/MapiRecords.h"
#include "ports/CodePage.h"
#include "ports/SimpleMapi.h"

namespace quillon {

// A message that is handed to the library, with everything its record points to. `convert` makes
// the library's texts out of UTF-8.
template <class Char>
class NativeMessage {
 public:
  using Text = std::basic_string<Char>;

  NativeMessage(const MapiMessage& message, std::function<Text(const std::string&)> convert)
      : convert_(std::move(convert)) {
    for (const auto& recipient : message.recipients) recipients_.push_back(Laid(recipient));
    for (const auto& file : message.files) {
      files_.push_back({0, file.flags, static_cast<ULONG>(file.position), Keep(file.path),
                        Keep(file.name), nullptr});
    }
    record_.subject = Keep(message.subject);
    record_.noteText = Keep(message.noteText);
    record_.messageType = message.messageType.empty() ? nullptr : Keep(message.messageType);
    record_.flags = message.flags;
    record_.recipientCount = static_cast<ULONG>(recipients_.size());
    record_.recipients = recipients_.empty() ? nullptr : recipients_.data();
    record_.fileCount = static_cast<ULONG>(files_.size());
    record_.files = files_.empty() ? nullptr : files_.data();
  }
  NativeMessage(const NativeMessage&) = delete;
  NativeMessage& operator=(const NativeMessage&) = delete;

  mapi_record::Message<Char>* Record() noexcept { return &record_; }

 private:
  Char* Keep(const std::string& text) { return texts_.emplace_back(convert_(text)).data(); }

  mapi_record::Recipient<Char> Laid(const MapiRecipient& recipient) {
    mapi_record::Recipient<Char> laid;
    laid.recipientClass = recipient.recipientClass;
    laid.name = Keep(recipient.name);
    if (!recipient.address.empty()) laid.address = Keep(recipient.address);
    if (!recipient.entryId.empty()) {
      laid.entryIdSize = static_cast<ULONG>(recipient.entryId.size());
      laid.entryId = entryIds_.emplace_back(recipient.entryId).data();
    }
    return laid;
  }

  std::function<Text(const std::string&)> convert_;
  std::deque<Text> texts_;  // whose addresses stay
  std::deque<std::string> entryIds_;
  std::vector<mapi_record::Recipient<Char>> recipients_;
  std::vector<mapi_record::File<Char>> files_;
  mapi_record::Message<Char> record_;
};

// What the library has handed out, copied. A null pointer is the empty text.
MapiRecipient RecipientFrom(const mapi_record::Recipient<char>& record, const CodePage& codePage);
MapiMessage MessageFrom(const mapi_record::Message<char>& record, const CodePage& codePage);

}  // namespace quillon
