#include "backends/mhs/MhsBackEnd.h"

#include <set>
#include <string>
#include <utility>

#include "backends/mhs/MhsDraft.h"
#include "backends/mhs/MhsErrorText.h"
#include "backends/mhs/MhsFailure.h"
#include "backends/mhs/MhsInbox.h"
#include "backends/mhs/MhsReadMarks.h"
#include "backends/mhs/MhsRecords.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "mail/CurrentHeader.h"
#include "mail/LoadedMessage.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

namespace {

constexpr const char* kTitle = "MHS Mail Error";
constexpr const char* kMessageFailed = "Error getting mail message";

// Whose headers they are.
std::string MailboxOf(const MhsInbox& inbox) {
  return "MHS " + UpperAscii(inbox.Directory());
}

const HeaderRecord& HeaderToWorkOn(const MailRequest& request, const MhsInbox& inbox) {
  const auto& header = CurrentHeader(request.shared, request.instance);
  if (request.shared.headerOrigin.mailbox != MailboxOf(inbox)) {
    throw ServerError(error_code::kNoHeaders);
  }
  return header;
}

void SaveAttachments(FileSystem& files, const CodePage& codePage, const MhsInbox& inbox,
                     const SmfMessage& message, ReceivedFiles& received) {
  std::set<std::string> saved;
  for (const auto& attachment : SmfAttachments(message)) {
    // Thousands of names for one large file would fill the disk.
    if (!saved.insert(UpperAscii(attachment.parcel)).second) continue;
    const auto parcel = inbox.ParcelPath(attachment.parcel);
    const auto& name = attachment.name.empty() ? attachment.parcel : attachment.name;
    if (received.Copy(parcel, codePage.ToText(name))) continue;
    const bool isGone = !files.FileExists(parcel);
    throw MhsFailure(kMessageFailed, isGone ? mhs::kNoAttachment : mhs::kAttachmentNotSaved);
  }
}

}  // namespace

MhsBackEnd::MhsBackEnd(const MhsPorts& ports)
    : ports_(ports),
      diagnostic_(ports.messageBox, kTitle, MhsErrorText),
      books_(ports.files, codePage_,
             [this](MailRequest& request, const std::function<void(const MhsAccount&)>& operation) {
               return Run(request, operation);
             }) {}

MailResult MhsBackEnd::Run(MailRequest& request,
                           const std::function<void(const MhsAccount&)>& operation) {
  try {
    const auto account = ports_.accounts.Find(ports_.loginPrompt, request);
    request.instance.session = {0, true, false};
    operation(account);
    return {};
  } catch (const MhsFailure& failure) {
    return diagnostic_.Fail(request, failure.what(), failure.Number());
  }
}

MailResult MhsBackEnd::Login(MailRequest& request) {
  return Run(request, [](const MhsAccount&) {});
}

MailResult MhsBackEnd::Logout(MailRequest& request) {
  request.instance.session = {};
  return {};
}

MailResult MhsBackEnd::Send(MailRequest& request) {
  return Run(request, [&](const MhsAccount& account) {
    SendMhsMessage({ports_.files, ports_.clock, codePage_}, request, account);
  });
}

MailResult MhsBackEnd::LoadMessageHeaders(MailRequest& request) {
  return Run(request, [&](const MhsAccount& account) {
    const MhsInbox inbox(ports_.files, account);
    MhsReadMarks marks(ports_.files, inbox.Directory());
    const auto names = inbox.Names();
    MhsListing listing(request.instance, codePage_);
    for (const auto& name : names) {
      const auto head = inbox.Head(name);
      if (head) listing.Add(name, *head, marks.Contains(name, head->identity));
    }
    request.shared.headers = listing.Take();
    request.shared.headerOrigin = {MailboxOf(inbox), 0};
    marks.Tidy({names.begin(), names.end()});
  });
}

MailResult MhsBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  return Run(request, [&](const MhsAccount& account) {
    const MhsInbox inbox(ports_.files, account);
    const MhsReadMarks marks(ports_.files, inbox.Directory());
    count = 0;
    for (const auto& name : inbox.Names()) {
      const auto head = inbox.Head(name);
      if (head && !marks.Contains(name, head->identity)) ++count;
    }
  });
}

MailResult MhsBackEnd::LoadMessage(MailRequest& request) {
  return Run(request, [&](const MhsAccount& account) {
    const MhsInbox inbox(ports_.files, account);
    const auto& instance = request.instance;
    const auto& header = HeaderToWorkOn(request, inbox);
    const auto message = inbox.Read(header.uniqueId, header.identity);
    ReceivedFiles received(ports_.files, request);
    if (instance.suppressAttachments == kFalse) {
      SaveAttachments(ports_.files, codePage_, inbox, message, received);
    }
    auto loaded = LoadedMhsMessage(message, instance.dateFormat, codePage_);
    if (instance.peekOnly == kFalse &&
        !MhsReadMarks(ports_.files, inbox.Directory()).Add(header.uniqueId, header.identity)) {
      throw MhsFailure(kMessageFailed, mhs::kNotMarked);
    }
    loaded.attachments = received.Keep();
    MakeCurrent(request.shared.message, std::move(loaded));
  });
}

MailResult MhsBackEnd::DeleteMessage(MailRequest& request) {
  return Run(request, [&](const MhsAccount& account) {
    const MhsInbox inbox(ports_.files, account);
    const auto& header = HeaderToWorkOn(request, inbox);
    inbox.Delete(header.uniqueId, header.identity);
  });
}

}  // namespace quillon
