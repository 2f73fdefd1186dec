// What belongs to one Server instance: login data, options and the chosen mail system, each with
// its default.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/ShortBool.h"
#include "mail/MailSystemId.h"

namespace quillon {

inline constexpr float kUtcOffsetNotSet = -50.0F;

// A session with a mail system, as one Server sees it.
struct MailSessionSlot {
  std::int32_t handle = 0;
  bool loggedIn = false;
  bool isClients = false;  // handed in by the client, who ends it himself
};

// How Internet mail is secured and logged in to, as far as the script itself has said it: that goes
// before the configuration file.
struct InternetAccess {
  std::optional<std::int16_t> smtpSecurity;  // ConnectionSecurity
  std::optional<std::int16_t> popSecurity;
  std::optional<std::string> smtpLoginName;
  std::optional<std::string> smtpPassword;
  std::optional<std::string> authentication;  // names of mechanisms, in order
  std::optional<std::string> accessToken;
  std::optional<std::string> pinnedCertificate;
  std::optional<ShortBool> extensions;
  std::optional<ShortBool> detailedErrors;
  std::optional<ShortBool> rawHeaders;
  std::optional<std::string> charset;  // of what leaves; empty: the contract's way
  std::optional<ShortBool> modernHeaders;
  std::optional<ShortBool> expandTnef;
  std::optional<ShortBool> trackUnread;
};

struct InstanceState {
  MailSystemId mailSystem = mail_system::kNone;
  MailSessionSlot session;  // with the current mail system

  std::string loginName;
  std::string password;
  std::string postOffice;
  std::string profile;
  std::string applicationName;
  std::string smtpServer;
  std::string messageType;
  std::string conversationIndex;
  std::string folder;

  std::string recipientDelimiter = ",";
  std::string recipientBrackets = "<>";
  std::string folderDelimiter = "\\\\";
  std::string dateFormat = "General Date";
  std::string xMailer;
  std::string dialogCaption = "Send Mail Message";
  std::string attachmentDirectory;
  std::string zipPassword;

  bool wantsHtml = false;  // the client has used HTMLMessage

  std::int32_t maximumHeaders = 1000;
  std::int32_t messageIndex = 0;
  std::int16_t attachmentEncoding = 2;
  float utcOffset = kUtcOffsetNotSet;  // hours
  std::int16_t importance = 3;
  std::int16_t deliveryPriority = 3;
  std::int16_t deliveryReport = 0;
  std::int16_t sensitivity = 0;

  ShortBool signedMessage = kFalse;
  ShortBool encrypt = kFalse;
  ShortBool preventCopying = kFalse;
  ShortBool concatenateMessage = kFalse;
  ShortBool dateSort = kTrue;
  ShortBool loginDialog = kTrue;
  ShortBool errorDisplay = kFalse;
  ShortBool nativeMailDialog = kFalse;
  ShortBool dialogErrorOnCancel = kFalse;
  ShortBool unreadOnly = kFalse;
  ShortBool peekOnly = kFalse;
  ShortBool suppressAttachments = kFalse;
  ShortBool forceDownload = kFalse;
  ShortBool nameResolution = kFalse;
  ShortBool headersInMessage = kFalse;
  ShortBool returnShortFilespecs = kFalse;
  ShortBool internetLogging = kFalse;

  InternetAccess access;
};

}  // namespace quillon
