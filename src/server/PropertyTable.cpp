#include "server/PropertyTable.h"

#include <array>
#include <limits>
#include <type_traits>

namespace quillon {

namespace {

using P = Property;
using R = PropertyRule;
using I = InstanceState;
using M = MessageBuffers;
using N = InternetSettings;
using A = InternetAccess;
using C = ConnectionReport;

constexpr double kLongMax = std::numeric_limits<std::int32_t>::max();

// In the order of Property, so that a row is found by its index.
constexpr std::array kRows{
    PropertyRow{P::mailSystem, "mailSystem", R::Special, &I::mailSystem},
    PropertyRow{P::Password, "Password", R::Text, &I::password},
    PropertyRow{P::postOffice, "postOffice", R::Text, &I::postOffice},
    PropertyRow{P::subject, "subject", R::Text, &M::subject},
    PropertyRow{P::Message, "Message", R::Text, &M::body},
    PropertyRow{P::ErrorDisplay, "ErrorDisplay", R::Flag, &I::errorDisplay},
    PropertyRow{P::Certify, "Certify", R::Flag, &M::certify},
    PropertyRow{P::NativeMailDialog, "NativeMailDialog", R::Flag, &I::nativeMailDialog},
    PropertyRow{P::DialogCaption, "DialogCaption", R::Text, &I::dialogCaption},
    PropertyRow{P::DialogErrorOnCancel, "DialogErrorOnCancel", R::Flag, &I::dialogErrorOnCancel},
    PropertyRow{P::loginName, "loginName", R::Text, &I::loginName},
    PropertyRow{P::ServerVersion, "ServerVersion", R::Special, {}},
    PropertyRow{P::ServerPath, "ServerPath", R::Special, {}},
    PropertyRow{P::MaximumHeaders, "MaximumHeaders", R::Range, &I::maximumHeaders, 1, kLongMax},
    PropertyRow{P::Folder, "Folder", R::Text, &I::folder},
    PropertyRow{P::unreadOnly, "unreadOnly", R::Flag, &I::unreadOnly},
    PropertyRow{P::messageCount, "messageCount", R::Special, {}},
    PropertyRow{P::UnreadCount, "UnreadCount", R::Special, {}},
    PropertyRow{P::suppressAttachments, "suppressAttachments", R::Flag, &I::suppressAttachments},
    PropertyRow{P::peekOnly, "peekOnly", R::Flag, &I::peekOnly},
    PropertyRow{P::DateSent, "DateSent", R::Text, &M::dateSent},
    PropertyRow{P::messageIndex, "messageIndex", R::Special, &I::messageIndex},
    PropertyRow{P::undocumented1, "undocumented1", R::Special, {}},
    PropertyRow{P::sessionHandle, "sessionHandle", R::Special, {}},
    PropertyRow{P::forceDownload, "forceDownload", R::Flag, &I::forceDownload},
    PropertyRow{P::applicationName, "applicationName", R::Text, &I::applicationName},
    PropertyRow{P::dateFormat, "dateFormat", R::Special, &I::dateFormat},
    PropertyRow{P::NameResolution, "NameResolution", R::Flag, &I::nameResolution},
    PropertyRow{P::profile, "profile", R::Text, &I::profile},
    PropertyRow{P::dateSort, "dateSort", R::Flag, &I::dateSort},
    PropertyRow{P::recipientDelimiter, "recipientDelimiter", R::Special, &I::recipientDelimiter},
    PropertyRow{P::HeadersInMessage, "HeadersInMessage", R::Flag, &I::headersInMessage},
    PropertyRow{P::from, "from", R::Text, &M::from},
    PropertyRow{P::SMTPServer, "SMTPServer", R::Text, &I::smtpServer},
    PropertyRow{P::ProgressBar, "ProgressBar", R::Range, &N::progressBar, 0, 7},
    PropertyRow{P::attachmentEncoding, "attachmentEncoding", R::Range, &I::attachmentEncoding, 0,
                255},
    PropertyRow{P::XMailer, "XMailer", R::Text, &I::xMailer},
    PropertyRow{P::TimeoutProtocol, "TimeoutProtocol", R::Range, &N::timeoutProtocol, 2000, 60000},
    PropertyRow{P::TimeoutConnect, "TimeoutConnect", R::Range, &N::timeoutConnect, 2000, 60000},
    PropertyRow{P::ProgressBarThreshold, "ProgressBarThreshold", R::Range, &N::progressBarThreshold,
                0, kLongMax},
    PropertyRow{P::SMTPPort, "SMTPPort", R::Special, &N::smtpPort},
    PropertyRow{P::POPPort, "POPPort", R::Special, &N::popPort},
    PropertyRow{P::LoginDialog, "LoginDialog", R::Flag, &I::loginDialog},
    PropertyRow{P::MessageType, "MessageType", R::Text, &I::messageType},
    PropertyRow{P::hWND, "hWND", R::Number, &SharedState::ownerWindow},
    PropertyRow{P::suppressAlternatives, "suppressAlternatives", R::Flag, &N::suppressAlternatives},
    PropertyRow{P::UTCOffset, "UTCOffset", R::Special, &I::utcOffset, -24, 24},
    PropertyRow{P::SessionHandleEx, "SessionHandleEx", R::Special, {}},
    PropertyRow{P::AttachmentDirectory, "AttachmentDirectory", R::Special, &I::attachmentDirectory},
    PropertyRow{P::ZipPassword, "ZipPassword", R::Special, &I::zipPassword},
    PropertyRow{P::replyTo, "replyTo", R::Text, &M::replyTo},
    PropertyRow{P::ServerType, "ServerType", R::Special, {}},
    PropertyRow{P::FolderDelimiter, "FolderDelimiter", R::Text, &I::folderDelimiter},
    PropertyRow{P::ReturnShortFilespecs, "ReturnShortFilespecs", R::Flag, &I::returnShortFilespecs},
    PropertyRow{P::ConversationIndex, "ConversationIndex", R::Text, &I::conversationIndex},
    PropertyRow{P::DefaultProfile, "DefaultProfile", R::Special, {}},
    PropertyRow{P::InternetLogging, "InternetLogging", R::Flag, &I::internetLogging},
    PropertyRow{P::Importance, "Importance", R::Range, &I::importance, 1, 5},
    PropertyRow{P::DeliveryReport, "DeliveryReport", R::Range, &I::deliveryReport, 0, 3},
    PropertyRow{P::DeliveryPriority, "DeliveryPriority", R::Range, &I::deliveryPriority, 2, 4},
    PropertyRow{P::signed_, "signed", R::Flag, &I::signedMessage},
    PropertyRow{P::Encrypt, "Encrypt", R::Flag, &I::encrypt},
    PropertyRow{P::Sensitivity, "Sensitivity", R::Range, &I::sensitivity, 0, 10},
    PropertyRow{P::PreventCopying, "PreventCopying", R::Flag, &I::preventCopying},
    PropertyRow{P::ConcatenateMessage, "ConcatenateMessage", R::Flag, &I::concatenateMessage},
    PropertyRow{P::SMTPSecurity, "SMTPSecurity", R::Range, &A::smtpSecurity, 0, 3},
    PropertyRow{P::POPSecurity, "POPSecurity", R::Range, &A::popSecurity, 0, 3},
    PropertyRow{P::SMTPLoginName, "SMTPLoginName", R::Text, &A::smtpLoginName},
    PropertyRow{P::SMTPPassword, "SMTPPassword", R::Text, &A::smtpPassword},
    PropertyRow{P::Authentication, "Authentication", R::Special, &A::authentication},
    PropertyRow{P::AccessToken, "AccessToken", R::Text, &A::accessToken},
    PropertyRow{P::PinnedCertificate, "PinnedCertificate", R::Special, &A::pinnedCertificate},
    PropertyRow{P::Extensions, "Extensions", R::Flag, &A::extensions},
    PropertyRow{P::DetailedErrors, "DetailedErrors", R::Flag, &A::detailedErrors},
    PropertyRow{P::TLSVersion, "TLSVersion", R::Special, &C::tlsVersion},
    PropertyRow{P::ServerCertificate, "ServerCertificate", R::Special, &C::serverCertificate},
    PropertyRow{P::LastServerReply, "LastServerReply", R::Special, &C::lastServerReply},
    PropertyRow{P::RawHeaders, "RawHeaders", R::Flag, &A::rawHeaders},
    PropertyRow{P::Charset, "Charset", R::Special, &A::charset},
    PropertyRow{P::ModernHeaders, "ModernHeaders", R::Flag, &A::modernHeaders},
    PropertyRow{P::HTMLMessage, "HTMLMessage", R::Special, &M::html},
    PropertyRow{P::ExpandTnef, "ExpandTnef", R::Flag, &A::expandTnef},
    PropertyRow{P::TrackUnread, "TrackUnread", R::Flag, &A::trackUnread},
};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    if (kRows[i].property != static_cast<Property>(i)) return false;
  }
  return true;
}
static_assert(InOrder());

}  // namespace

const PropertyRow& RowOf(Property property) {
  return kRows[static_cast<std::size_t>(property)];
}

PropertyVariable VariableOf(const PropertyRow& row, InstanceState& instance, SharedState& shared) {
  return std::visit(
      [&](auto slot) -> PropertyVariable {
        using Slot = decltype(slot);
        if constexpr (std::is_same_v<Slot, std::monostate>) {
          return std::monostate{};
        } else if constexpr (std::is_invocable_v<Slot, InstanceState&>) {
          return &(instance.*slot);
        } else if constexpr (std::is_invocable_v<Slot, InternetAccess&>) {
          return &(instance.access.*slot);
        } else if constexpr (std::is_invocable_v<Slot, ConnectionReport&>) {
          return &(shared.connection.*slot);
        } else if constexpr (std::is_invocable_v<Slot, MessageBuffers&>) {
          return &(shared.message.*slot);
        } else if constexpr (std::is_invocable_v<Slot, InternetSettings&>) {
          return &(shared.internet.*slot);
        } else {
          return &(shared.*slot);
        }
      },
      row.slot);
}

}  // namespace quillon
