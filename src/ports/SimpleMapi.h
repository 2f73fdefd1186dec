// Simple MAPI as the workstation's mail program offers it, in plain records. All texts are UTF-8;
// the library's own layout and code page belong to the implementation.
//
// Every call returns the library's number: 0 for success, MAPI_E_NOT_SUPPORTED (26) also when the
// library, or the function in it, is missing. Whatever the library hands out has been copied and
// given back to it when a call returns. `window` is the owner of dialogs, 0 for none.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillon {

// Published numbers of the interface.
namespace mapi {

inline constexpr std::uint32_t kSuccess = 0;
inline constexpr std::uint32_t kUserAbort = 1;
inline constexpr std::uint32_t kNoMessages = 16;
inline constexpr std::uint32_t kNotSupported = 26;

inline constexpr std::uint32_t kOriginator = 0;  // classes of recipients
inline constexpr std::uint32_t kTo = 1;
inline constexpr std::uint32_t kCc = 2;
inline constexpr std::uint32_t kBcc = 3;

inline constexpr std::uint32_t kEditFields = 3;  // of the address book: To, Cc and Bcc

inline constexpr std::uint32_t kUnread = 1;  // flags of a message
inline constexpr std::uint32_t kReceiptRequested = 2;
inline constexpr std::uint32_t kSent = 4;

inline constexpr std::uint32_t kLogonUi = 0x1;  // flags of calls
inline constexpr std::uint32_t kNewSession = 0x2;
inline constexpr std::uint32_t kDialog = 0x8;
inline constexpr std::uint32_t kUnreadOnly = 0x20;
inline constexpr std::uint32_t kEnvelopeOnly = 0x40;
inline constexpr std::uint32_t kPeek = 0x80;
inline constexpr std::uint32_t kGuaranteeFifo = 0x100;
inline constexpr std::uint32_t kAddressBookNoModify = 0x400;
inline constexpr std::uint32_t kSuppressAttach = 0x800;
inline constexpr std::uint32_t kForceDownload = 0x1000;

}  // namespace mapi

struct MapiRecipient {
  std::uint32_t recipientClass = mapi::kOriginator;
  std::string name;
  std::string address;  // as "SMTP:joe@example.com"; may be empty
  std::string entryId;  // bytes; not empty when the address book has resolved the recipient
};

struct MapiFile {
  std::uint32_t flags = 0;
  std::int32_t position = -1;  // of the character it replaces in the text; -1: none
  std::string path;
  std::string name;  // for the recipient
};

struct MapiMessage {
  std::string subject;
  std::string noteText;
  std::string messageType;
  std::string dateReceived;  // "YYYY/MM/DD HH:MM"
  std::string conversationId;
  std::uint32_t flags = 0;
  MapiRecipient originator;
  std::vector<MapiRecipient> recipients;
  std::vector<MapiFile> files;
};

class SimpleMapi {
 public:
  virtual ~SimpleMapi() = default;

  virtual std::uint32_t Logon(std::uint32_t window, const std::string& profile,
                              const std::string& password, std::uint32_t flags,
                              std::uint32_t& session) = 0;
  virtual std::uint32_t Logoff(std::uint32_t session, std::uint32_t window) = 0;

  // The message after `seed`, or the first one; kNoMessages when there is none.
  virtual std::uint32_t FindNext(std::uint32_t session, std::uint32_t window,
                                 const std::string& messageType, const std::string& seed,
                                 std::uint32_t flags, std::string& id) = 0;

  // Of a list of messages, and one of them whole: two functions, which differ in what the library
  // has to hand out. Files of the message lie in temporary files that the caller removes.
  virtual std::uint32_t ReadEnvelope(std::uint32_t session, std::uint32_t window,
                                     const std::string& id, std::uint32_t flags,
                                     MapiMessage& message) = 0;
  virtual std::uint32_t ReadMail(std::uint32_t session, std::uint32_t window, const std::string& id,
                                 std::uint32_t flags, MapiMessage& message) = 0;

  virtual std::uint32_t DeleteMail(std::uint32_t session, std::uint32_t window,
                                   const std::string& id) = 0;

  virtual std::uint32_t ResolveName(std::uint32_t session, std::uint32_t window,
                                    const std::string& name, std::uint32_t flags,
                                    MapiRecipient& recipient) = 0;

  // Lets the user change the recipients in the mail program's address book.
  virtual std::uint32_t Address(std::uint32_t session, std::uint32_t window,
                                const std::string& caption,
                                std::vector<MapiRecipient>& recipients) = 0;

  // Sends the message as it is, and lets the user change it first in the mail program's own
  // dialog: two functions again.
  virtual std::uint32_t SendMail(std::uint32_t session, std::uint32_t window,
                                 const MapiMessage& message, std::uint32_t flags) = 0;
  virtual std::uint32_t SendMailInDialog(std::uint32_t session, std::uint32_t window,
                                         const MapiMessage& message, std::uint32_t flags) = 0;
};

}  // namespace quillon
