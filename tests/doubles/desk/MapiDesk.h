// Simple MAPI over the desk's store, in plain records: what a provider library does behind the
// records of C. Any number of threads may use it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/Store.h"

namespace desk {

// The interface's numbers, as published: results, and flags of calls and of messages.
enum MapiResult : std::uint32_t {
  kMapiSuccess = 0,
  kMapiUserAbort = 1,
  kMapiFailure = 2,
  kMapiLogonFailure = 3,
  kMapiAttachmentNotFound = 11,
  kMapiAttachmentOpenFailure = 12,
  kMapiAttachmentWriteFailure = 13,
  kMapiUnknownRecipient = 14,
  kMapiBadRecipType = 15,
  kMapiNoMessages = 16,
  kMapiInvalidMessage = 17,
  kMapiInvalidSession = 19,
  kMapiAmbiguousRecipient = 21,
  kMapiInvalidEditFields = 24,
  kMapiInvalidRecips = 25,
  kMapiNotSupported = 26,
};

inline constexpr std::uint32_t kMapiLogonUi = 0x1;
inline constexpr std::uint32_t kMapiDialog = 0x8;
inline constexpr std::uint32_t kMapiUnreadOnly = 0x20;
inline constexpr std::uint32_t kMapiEnvelopeOnly = 0x40;
inline constexpr std::uint32_t kMapiPeek = 0x80;
inline constexpr std::uint32_t kMapiGuaranteeFifo = 0x100;
inline constexpr std::uint32_t kMapiSuppressAttach = 0x800;

inline constexpr std::uint32_t kMapiUnread = 0x1;
inline constexpr std::uint32_t kMapiReceiptRequested = 0x2;
inline constexpr std::uint32_t kMapiSent = 0x4;

struct Party {
  std::uint32_t kind = 0;  // 0 originator, 1 To, 2 Cc, 3 Bcc
  std::string name;
  std::string address;
  std::string entryId;  // of one that needs no looking up
};

struct MailFile {
  std::int32_t position = -1;
  std::filesystem::path path;  // empty: not asked for
  std::string name;
};

struct Mail {
  std::string subject;
  std::string text;
  std::string type;
  std::string date;
  std::string conversation;
  std::uint32_t flags = 0;
  Party originator;
  std::vector<Party> recipients;
  std::vector<MailFile> files;
};

class MapiDesk {
 public:
  // `trouble` does what a word of the fault file says that is no number.
  explicit MapiDesk(std::filesystem::path place,
                    std::function<void(std::string_view)> trouble = {});

  std::uint32_t Logon(const std::string& profile, const std::string& password, std::uint32_t flags,
                      std::uint32_t& session);
  std::uint32_t Logoff(std::uint32_t session);
  std::uint32_t FindNext(std::uint32_t session, const std::string& type, const std::string& seed,
                         std::uint32_t flags, std::string& id);
  // The files of the mail are new ones in the directory for temporary files.
  std::uint32_t ReadMail(std::uint32_t session, const std::string& id, std::uint32_t flags,
                         Mail& mail);
  // Session 0: one of the default account, for this call.
  std::uint32_t SendMail(std::uint32_t session, const Mail& mail, std::uint32_t flags);
  // An empty identifier: a new message in the Inbox.
  std::uint32_t SaveMail(std::uint32_t session, const Mail& mail, std::string& id);
  std::uint32_t DeleteMail(std::uint32_t session, const std::string& id);
  std::uint32_t ResolveName(std::uint32_t session, const std::string& name, std::uint32_t flags,
                            Party& party);
  // Leaves the parties that the user of the address book chooses.
  std::uint32_t Address(std::uint32_t session, std::vector<Party>& parties);
  // A call of the interface that this provider does not have, or that is no business of the store;
  // kMapiSuccess unless the fault file says otherwise.
  std::uint32_t Note(std::string_view name, std::string_view arguments);

 private:
  struct Session {
    Account account;
    std::vector<std::string> ids;  // of the Inbox, in the order of the walk
    std::size_t at = 0;            // where the last one found stands
    bool fifo = false;
  };

  std::uint32_t Guarded(std::string_view name, std::string_view arguments,
                        const std::function<std::uint32_t()>& call);
  Session* Find(std::uint32_t session);
  void Walk(Session& session, bool fifo);
  bool Stand(Session& session, const std::string& id);
  bool Matches(const Session& session, const std::string& id, const std::string& type,
               std::uint32_t flags);
  std::uint32_t WriteFiles(const Message& message, Mail& mail);
  std::uint32_t ResolveParty(const Party& party, Recipient& recipient);
  std::uint32_t Compose(const Mail& mail, Message& message);

  std::mutex mutex_;
  Store store_;
  std::function<void(std::string_view)> trouble_;
  std::map<std::uint32_t, Session> sessions_;
  std::uint32_t lastSession_ = 0x1000;
  std::uint32_t lastFile_ = 0;
};

}  // namespace desk
