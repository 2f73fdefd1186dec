// Creation, termination and composition.
#include "server/Server.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string_view>

#include "codec/PartHeader.h"
#include "core/RecipientText.h"
#include "core/Text.h"
#include "core/WholeFile.h"
#include "internet/ProtocolLog.h"
#include "ports/FileSystem.h"
#include "server/ErrorTable.h"
#include "server/MailSystems.h"
#include "server/MessageFile.h"
#include "server/MessageItems.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestLabel = 255;
constexpr std::size_t kLongestFieldName = 70;  // so that something fits beside it

// The counts of the public interface are short integers.
constexpr std::size_t kListLimit = std::numeric_limits<std::int16_t>::max();

// The header fields that the server writes itself.
constexpr std::array<std::string_view, 16> kReservedHeaders{
    "Date",
    "From",
    "To",
    "Cc",
    "Subject",
    "MIME-version",
    "Reply-To",
    "Content-Type",
    "Content-Transfer-Encoding",
    "X-Priority",
    "X-MSMail-Priority",
    "X-Interface",
    "X-Mailer",
    "X-SpecialBuild",
    "Return-Receipt-To",
    "Disposition-Notification-To",
};

bool IsReservedHeader(std::string_view name) {
  const auto prefixed = "X-" + std::string(name);
  return std::any_of(kReservedHeaders.begin(), kReservedHeaders.end(), [&](auto reserved) {
    return EqualsIgnoreCase(reserved, name) || EqualsIgnoreCase(reserved, prefixed);
  });
}

// What a client names itself: also what says who has sent a message again, or which way it has
// come, and what parts are described with.
bool IsReservedField(std::string_view name) {
  constexpr std::string_view kMore[] = {"Bcc", "Received", "Return-Path"};
  const auto upper = UpperAscii(name);
  const auto is = [&](std::string_view reserved) { return EqualsIgnoreCase(reserved, name); };
  return std::any_of(kReservedHeaders.begin(), kReservedHeaders.end(), is) ||
         std::any_of(std::begin(kMore), std::end(kMore), is) || upper.starts_with("CONTENT-") ||
         upper.starts_with("RESENT-");
}

// RFC 5322, section 3.6.8: printable US-ASCII without the colon.
bool IsFieldName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(),
                                      [](char c) { return c > ' ' && c <= '~' && c != ':'; });
}

// RFC 2045, section 5.1: two tokens. What is made of parts, or a message, is more than a file.
bool IsTypeOfFile(std::string_view type) {
  constexpr std::string_view kSpecials = "()<>@,;:\\\"/[]?=";
  const auto isToken = [&](std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
      return c > ' ' && c < 127 && kSpecials.find(c) == std::string_view::npos;
    });
  };
  const auto slash = type.find('/');
  if (slash == std::string_view::npos || type.size() > kLongestLabel) return false;
  const auto top = type.substr(0, slash);
  return isToken(top) && isToken(type.substr(slash + 1)) && !EqualsIgnoreCase(top, "multipart") &&
         !EqualsIgnoreCase(top, "message");
}

// What can stand in a Content-ID and behind "cid:" (RFC 2392, section 2).
bool IsContentId(std::string_view id) {
  return !id.empty() && id.size() <= kLongestLabel && std::all_of(id.begin(), id.end(), [](char c) {
    return c > ' ' && c < 127 && c != '<' && c != '>';
  });
}

[[noreturn]] void InvalidParameter() {
  throw ServerError(error_code::kInvalidValue, "Invalid parameter.");
}

}  // namespace

Server::Server(Environment& environment)
    : environment_(environment), dispatch_(state_, environment), frame_(state_, environment) {
  auto& shared = environment_.shared;
  ++shared.instanceCount;
  shared.internet = InternetSettings();
  shared.message.auxiliaryText.clear();
  environment_.notifier.Reset();
  state_.xMailer = "Quillon v" + environment_.product.version;
}

// The process may go on for another client, which finds everything as in a new one: what this one
// leaves behind is nobody else's. That client may come while the mail systems are shut down.
Server::~Server() {
  auto& shared = environment_.shared;
  auto& log = environment_.protocolLog;
  if (--shared.instanceCount > 0) return;
  try {
    environment_.mailSystems.AsynchAbort();
    environment_.notifier.StartAnew();
    shared.StartAnew();
    const auto starts = log.Starts();
    dispatch_.SaveSession();
    environment_.mailSystems.Shutdown(
        [this](MailFamily family) { return dispatch_.SavedSession(family).handle; },
        [&shared] { return shared.instanceCount == 0; }, environment_.busy);
    if (log.Starts() == starts) log.Stop();
  } catch (const std::exception&) {
    // There is no caller left to hear of it.
  }
}

void Server::AddRecipients(const char* member, Recipients list, const std::string& text,
                           std::int32_t fullCode) {
  frame_.Run(member, MemberKind::Method, [&] {
    auto& recipients = environment_.shared.message.*list;
    for (auto& recipient :
         SplitRecipients(text, state_.recipientDelimiter, state_.recipientBrackets)) {
      if (recipients.size() >= kListLimit) throw ServerError(fullCode);
      recipients.push_back(std::move(recipient));
    }
  });
}

void Server::AddRecipientTo(const std::string& theRecipient) {
  AddRecipients("AddRecipientTo", &MessageBuffers::to, theRecipient, error_code::kTooManyTo);
}

void Server::AddRecipientCc(const std::string& theRecipient) {
  AddRecipients("AddRecipientCc", &MessageBuffers::cc, theRecipient, error_code::kTooManyCc);
}

void Server::AddRecipientBcc(const std::string& theRecipient) {
  AddRecipients("AddRecipientBcc", &MessageBuffers::bcc, theRecipient, error_code::kTooManyBcc);
}

void Server::AddAttachment(const std::string& theAttachment) {
  frame_.Run("AddAttachment", MemberKind::Method, [&] {
    auto file = TrimmedCopy(theAttachment);
    if (file.empty()) return;
    std::string name(FileNameOf(file));
    AddFile({std::move(file), std::move(name)});
  });
}

void Server::AddAttachmentEx(const std::string& theAttachment, const std::string& theName,
                             const std::string& contentType) {
  frame_.Run("AddAttachmentEx", MemberKind::Method, [&] {
    Attachment attachment{TrimmedCopy(theAttachment), TrimmedCopy(theName)};
    if (attachment.file.empty()) InvalidParameter();
    if (attachment.displayName.empty()) attachment.displayName = FileNameOf(attachment.file);
    auto& type = attachment.label.contentType;
    type = TrimmedCopy(contentType);
    if (type.empty()) type = TypeOfExtension(attachment.displayName);
    if (!IsTypeOfFile(type)) {
      throw ServerError(error_code::kInvalidValue,
                        "\"" + type + "\" is no content type of a file.");
    }
    attachment.typeIsClients = true;
    AddFile(std::move(attachment));
  });
}

// An id has one file: another one takes its place.
void Server::AddInlineFile(const std::string& theFile, const std::string& contentId) {
  frame_.Run("AddInlineFile", MemberKind::Method, [&] {
    Attachment attachment{TrimmedCopy(theFile), {}};
    auto id = Trim(contentId);
    if (id.starts_with('<') && id.ends_with('>')) id = id.substr(1, id.size() - 2);
    if (attachment.file.empty() || !IsContentId(id)) InvalidParameter();
    attachment.displayName = FileNameOf(attachment.file);
    attachment.label = {TypeOfExtension(attachment.displayName), std::string(id)};
    attachment.isInline = true;
    auto& all = environment_.shared.message.attachments;
    const auto same = std::find_if(all.begin(), all.end(), [&](const Attachment& one) {
      return one.isInline && one.label.contentId == id;
    });
    if (same == all.end()) return AddFile(std::move(attachment));
    RequireFile(attachment.file);
    *same = std::move(attachment);
  });
}

void Server::AddFile(Attachment attachment) {
  RequireFile(attachment.file);
  auto& attachments = environment_.shared.message.attachments;
  if (attachments.size() >= kListLimit) throw ServerError(error_code::kTooManyAttachments);
  attachments.push_back(std::move(attachment));
}

void Server::RequireFile(const std::string& file) const {
  if (!environment_.files.FileExists(file)) throw ServerError(error_code::kNoAttachment);
}

void Server::AddAlternative(const std::string& theAlternative, const std::string& contentType,
                            std::int16_t) {
  frame_.Run("AddAlternative", MemberKind::Method, [&] {
    auto file = TrimmedCopy(theAlternative);
    auto type = TrimmedCopy(contentType);
    if (file.empty() || type.empty()) InvalidParameter();
    if (!environment_.files.FileExists(file)) {
      throw ServerError(error_code::kNoAttachment, "Alternative " + file + " does not exist.");
    }
    environment_.shared.message.alternatives.push_back({std::move(file), std::move(type)});
  });
}

void Server::AddXHeader(const std::string& theName, const std::string& theValue) {
  frame_.Run("AddXHeader", MemberKind::Method, [&] {
    auto name = TrimmedCopy(theName);
    if (IsReservedHeader(name)) throw ServerError(error_code::kReservedHeader);
    if (!IsFieldName(name)) InvalidParameter();
    environment_.shared.message.xHeaders.push_back({std::move(name), theValue});
  });
}

// A field has one value: another one takes its place, and an empty one takes the field away.
void Server::AddHeader(const std::string& theName, const std::string& theValue) {
  frame_.Run("AddHeader", MemberKind::Method, [&] {
    auto name = TrimmedCopy(theName);
    if (IsReservedField(name)) throw ServerError(error_code::kReservedHeader);
    if (!IsFieldName(name) || name.size() > kLongestFieldName) InvalidParameter();
    auto& headers = environment_.shared.message.headers;
    std::erase_if(headers, [&](const auto& one) { return EqualsIgnoreCase(one.name, name); });
    if (!Trim(theValue).empty()) headers.push_back({std::move(name), theValue});
  });
}

void Server::NewMessage() {
  frame_.Run("NewMessage", MemberKind::Method, [&] { ClearMessage(environment_.shared.message); });
}

void Server::NewMessagePost() {
  frame_.Run("NewMessagePost", MemberKind::Method,
             [&] { ClearMessage(environment_.shared.message); });
}

void Server::LoadMessageFromFile(const std::string& fileSpec) {
  frame_.Run("LoadMessageFromFile", MemberKind::Method, [&] {
    const auto path = TrimmedCopy(fileSpec);
    if (path.empty()) throw ServerError(error_code::kFileNotSpecified);
    if (!environment_.files.FileExists(path)) throw ServerError(error_code::kNoFile);
    const auto bytes = ReadWholeFile(environment_.files, path);
    if (!bytes) throw ServerError(error_code::kFileAccess);
    environment_.shared.message.body = DecodeMessageFile(*bytes, environment_.codePage);
  });
}

void Server::SaveMessageToFile(const std::string& fileSpec) {
  frame_.Run("SaveMessageToFile", MemberKind::Method, [&] {
    const auto path = TrimmedCopy(fileSpec);
    if (path.empty()) throw ServerError(error_code::kFileNotSpecified);
    const auto bytes = EncodeMessageFile(environment_.shared.message.body, environment_.codePage);
    if (!WriteWholeFile(environment_.files, path, bytes)) {
      throw ServerError(error_code::kFileAccess);
    }
  });
}

}  // namespace quillon
