// The operations with the messages of a container.
#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "backends/RecipientParts.h"
#include "backends/vim/VimBackEnd.h"
#include "backends/vim/VimEnumeration.h"
#include "backends/vim/VimFailure.h"
#include "backends/vim/VimMessage.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "core/WholeFile.h"
#include "mail/CurrentHeader.h"
#include "mail/LoadedMessage.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

namespace {

constexpr const char* kNoHeaders = "Cannot get message headers (VIMEnumerateMessages)";
constexpr const char* kNoMessage = "Cannot open message (VIMOpenMessages)";
constexpr const char* kNoNoteParts =
    "Cannot enumerate note part message items (VIMEnumerateMessageItems)";
constexpr const char* kNoNotePart = "Cannot get note part message item (VIMGetMessageItem)";
constexpr const char* kNoAttachments = "Cannot enumerate attachments (VIMEnumerateMessageItems)";
constexpr const char* kNoAttachment = "Cannot get file attachhment (VIMGetMessageItem)";
constexpr const char* kNotMarked = "Failure marking message as read (VIMMarkMessageAsRead)";
constexpr const char* kNotClosed = "Failure closing message (VIMCloseMessage)";
constexpr const char* kNotDeleted = "Cannot delete message (VIMRemoveMessage)";
constexpr const char* kNotMoved = "Cannot move message (VIMSetMessageCategory)";
constexpr const char* kNoCopies = "Cannot copy a message with VIM.";

// What the headers of the table are from: this, with the property Folder behind it.
constexpr std::string_view kMailbox = "VIM ";

// Types of text, which the library gives as plain text. The others stand in only for a message that
// has none of the first.
constexpr std::string_view kTextType = "VIM_TEXT";
constexpr std::array<std::string_view, 4> kOtherTextTypes = {"VIM_UNWRAPPED_TEXT", "VIM_STYLED",
                                                             "VIM_RTF", "VIM_CD"};

struct DatedEnvelope {
  VimEnvelope envelope;
  std::optional<DateTime> date;
};

auto SortKey(const DatedEnvelope& entry) {
  const auto date = entry.date.value_or(DateTime{std::numeric_limits<int>::max()});
  return std::tuple(date.year, date.month, date.day, date.hour, date.minute, date.second);
}

std::vector<VimItem> ItemsOf(Vim& library, const VimMessage& message, vim::Selector itemClass,
                             const char* step) {
  return EnumerateVim<VimItem>(
      kMostVimEntries, step, [&](VimPosition& position, std::vector<VimItem>& items, bool& more) {
        return library.EnumerateMessageItems(message.Handle(), position, itemClass, items, more);
      });
}

bool IsOtherText(const VimItem& item) {
  return std::any_of(kOtherTextTypes.begin(), kOtherTextTypes.end(),
                     [&](std::string_view type) { return EqualsIgnoreCase(item.type, type); });
}

std::string ReadText(Vim& library, const VimMessage& message) {
  auto parts = ItemsOf(library, message, vim::kNotePart, kNoNoteParts);
  const auto plain = std::stable_partition(parts.begin(), parts.end(), [](const VimItem& item) {
    return EqualsIgnoreCase(item.type, kTextType);
  });
  if (plain != parts.begin()) {
    parts.erase(plain, parts.end());
  } else {
    std::erase_if(parts, [](const VimItem& item) { return !IsOtherText(item); });
  }
  std::string body;
  for (const auto& part : parts) {
    std::string text;
    CheckVim(library.GetMessageItemText(message.Handle(), part, text), kNoNotePart);
    body += text;
  }
  return body;
}

std::vector<std::string> ReadRecipients(Vim& library, const VimMessage& message,
                                        vim::Selector recipientClass, const char* name) {
  const auto step = std::string("Cannot enumerate message recipients ") + name +
                    " (VIMEnumerateMessageRecipients)";
  const auto recipients = EnumerateVim<VimRecipient>(
      kMostVimEntries, step,
      [&](VimPosition& position, std::vector<VimRecipient>& list, bool& more) {
        return library.EnumerateMessageRecipients(message.Handle(), recipientClass, position, list,
                                                  more);
      });
  std::vector<std::string> texts;
  texts.reserve(recipients.size());
  for (const auto& [given, address] : recipients) {
    texts.push_back(given.empty() ? address : FormatRecipient(given, address));
  }
  return texts;
}

}  // namespace

std::vector<VimEnvelope> VimBackEnd::List(vim::Handle container, const VimFolder& folder,
                                          bool unreadOnly, std::size_t most) const {
  const auto filter = folder.isLog ? vim::kSent : vim::kNoFilter;
  return EnumerateVim<VimEnvelope>(
      std::min(most, kMostVimEntries), kNoHeaders,
      [&](VimPosition& position, std::vector<VimEnvelope>& messages, bool& more) {
        return ports_.library.EnumerateMessages(container, position, filter, unreadOnly, messages,
                                                more);
      });
}

MailResult VimBackEnd::LoadMessageHeaders(MailRequest& request) {
  return Run(request, [&] {
    sessions_.OpenOnDemand(request);
    const auto& instance = request.instance;
    const auto container = sessions_.Container(instance, VimFolder(instance.folder).container);
    request.shared.headers.clear();
    request.shared.headerOrigin = {std::string(kMailbox) + instance.folder,
                                   sessions_.NumberOf(instance)};
    ReadHeaders(request, container);
  });
}

void VimBackEnd::ReadHeaders(const MailRequest& request, vim::Handle container) {
  const auto& instance = request.instance;
  const VimFolder folder(instance.folder);
  const bool unreadOnly = instance.unreadOnly != kFalse;
  const auto found =
      List(container, folder, unreadOnly, static_cast<std::size_t>(instance.maximumHeaders));
  std::vector<DatedEnvelope> entries;
  entries.reserve(found.size());
  for (const auto& envelope : found) {
    entries.push_back({envelope, LocalDateOf(envelope.date, ports_.clock)});
  }
  if (instance.dateSort != kFalse) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return SortKey(a) < SortKey(b); });
  }
  std::set<std::pair<std::uint32_t, std::uint32_t>> unread;
  if (!unreadOnly && !found.empty()) {
    for (const auto& envelope : List(container, folder, true, kMostVimEntries)) {
      unread.insert({envelope.reference.first, envelope.reference.second});
    }
  }
  // What has been read before a failure stays.
  auto& table = request.shared.headers;
  for (const auto& [envelope, date] : entries) {
    auto record = ReadHeader(container, envelope, instance.dateFormat);
    record.number = std::to_string(table.size() + 1);
    const bool isUnread =
        unreadOnly || unread.contains({envelope.reference.first, envelope.reference.second});
    record.status = std::string(isUnread ? kStatusUnread : kStatusRead);
    table.push_back(std::move(record));
  }
}

HeaderRecord VimBackEnd::ReadHeader(vim::Handle container, const VimEnvelope& envelope,
                                    const std::string& dateFormat) const {
  auto message = OpenMessage(container, envelope.reference, kNoHeaders);
  const auto attachments = ItemsOf(ports_.library, message, vim::kAttach, kNoHeaders).size();
  VimHeader header;
  CheckVim(ports_.library.GetMessageHeader(message.Handle(), header), kNoHeaders);
  message.Close(kNoHeaders);
  auto record = VimRecordOf(envelope, header, attachments);
  auto date = LocalDateOf(header.date, ports_.clock);
  if (!date) date = LocalDateOf(envelope.date, ports_.clock);
  record.dateText = VimDateText(date, dateFormat);
  return record;
}

VimMessage VimBackEnd::OpenMessage(vim::Handle container, VimReference reference,
                                   const char* step) const {
  vim::Handle handle = 0;
  CheckVim(ports_.library.OpenMessage(container, reference, handle), step);
  return {ports_.library, handle};
}

VimBackEnd::Current VimBackEnd::CurrentMessage(const MailRequest& request) {
  const auto& record = CurrentHeader(request.shared, request.instance);
  const auto& [mailbox, session] = request.shared.headerOrigin;
  const auto reference = ParseVimReference(record.uniqueId);
  const bool isOurs =
      mailbox.starts_with(kMailbox) && session == sessions_.NumberOf(request.instance);
  if (!isOurs || !reference) throw ServerError(error_code::kNoHeaders);
  const VimFolder folder(mailbox.substr(kMailbox.size()));
  return {sessions_.Container(request.instance, folder.container), *reference, folder};
}

MailResult VimBackEnd::LoadMessage(MailRequest& request) {
  return Run(request, [&] {
    const auto current = CurrentMessage(request);
    const auto record = CurrentHeader(request.shared, request.instance);
    auto& library = ports_.library;
    auto message = OpenMessage(current.container, current.reference, kNoMessage);
    LoadedMessage loaded;
    loaded.body = ReadText(library, message);
    ReceivedFiles files(ports_.files, request);
    if (request.instance.suppressAttachments == kFalse) WriteAttachments(message, files);
    loaded.to = ReadRecipients(library, message, vim::kTo, "TO");
    loaded.cc = ReadRecipients(library, message, vim::kCc, "CC");
    loaded.bcc = ReadRecipients(library, message, vim::kBcc, "BCC");
    if (request.instance.peekOnly == kFalse) {
      CheckVim(library.MarkMessageAsRead(current.container, current.reference), kNotMarked);
    }
    message.Close(kNotClosed);
    loaded.from = record.originator;
    loaded.subject = record.subject;
    loaded.dateText = record.dateText;
    loaded.attachments = files.Keep();
    MakeCurrent(request.shared.message, std::move(loaded));
    request.shared.message.certify = record.receiptRequested;
  });
}

void VimBackEnd::WriteAttachments(const VimMessage& message, ReceivedFiles& files) const {
  for (const auto& item : ItemsOf(ports_.library, message, vim::kAttach, kNoAttachments)) {
    const auto path = files.NewFile(std::string(FileNameOf(item.name)));
    if (path.empty()) throw VimFailure(kNoAttachment, vim::kWriteFailure);
    // The library's own directory need not be this program's.
    CheckVim(ports_.library.GetMessageItemFile(message.Handle(), item, ports_.files.FullPath(path)),
             kNoAttachment);
  }
}

MailResult VimBackEnd::DeleteMessage(MailRequest& request) {
  return Run(request, [&] {
    const auto current = CurrentMessage(request);
    CheckVim(ports_.library.RemoveMessage(current.container, current.reference), kNotDeleted);
  });
}

MailResult VimBackEnd::MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) {
  if (copy) {
    diagnostic_.Show(request, kNoCopies, error_code::kNotSupported);
    throw ServerError(error_code::kNotSupported, kNoCopies);
  }
  return Run(request, [&] {
    const auto current = CurrentMessage(request);
    const VimFolder target(folder);
    // What was sent is in no folder, and nothing can be put among it.
    if (target.isLog || current.folder.isLog) throw VimFailure(kNotMoved, vim::kNotSupported);
    // Taking it from where it came from would lose it.
    if (EqualsIgnoreCase(target.container, current.folder.container)) return;
    auto& library = ports_.library;
    if (target.container.empty()) {
      CheckVim(library.RemoveMessageCategory(current.container, current.reference,
                                             current.folder.container),
               kNotMoved);
      return;
    }
    CheckVim(library.SetMessageCategory(current.container, current.reference, target.container),
             kNotMoved);
    const auto removed = library.RemoveMessage(current.container, current.reference);
    if (removed != vim::kSuccess) {  // otherwise another try would put it there twice
      library.RemoveMessageCategory(current.container, current.reference, target.container);
    }
    CheckVim(removed, kNotMoved);
  });
}

MailResult VimBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  return Run(request, [&] {
    sessions_.OpenOnDemand(request);
    const auto inbox = sessions_.Container(request.instance, {});
    std::uint32_t unread = 0;
    CheckVim(ports_.library.QueryUnreadMailCount(inbox, unread));
    constexpr auto kMost = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    count = static_cast<std::int32_t>(std::min(unread, kMost));
  });
}

}  // namespace quillon
