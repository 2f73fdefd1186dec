#include "desk/MapiDesk.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <sstream>
#include <system_error>
#include <utility>

#include "core/Text.h"

namespace desk {

namespace fs = std::filesystem;

namespace {

std::optional<std::uint32_t> NumberIn(std::string_view word) {
  std::uint32_t number = 0;
  const bool hex = word.starts_with("0x");
  if (hex) word.remove_prefix(2);
  const auto end = std::from_chars(word.data(), word.data() + word.size(), number, hex ? 16 : 10);
  if (word.empty() || end.ptr != word.data() + word.size()) return std::nullopt;
  return number;
}

std::string Told(std::uint32_t session, std::uint32_t flags, std::string_view rest = {}) {
  std::ostringstream text;
  text << "session=" << session << " flags=" << flags << (rest.empty() ? "" : " ") << rest;
  return text.str();
}

std::string Told(const Mail& mail) {
  std::ostringstream text;
  text << "mailflags=" << mail.flags << " recipients=" << mail.recipients.size()
       << " files=" << mail.files.size() << " type=" << mail.type << " subject=" << mail.subject;
  return text.str();
}

Mail MailOf(const Message& message, bool withText) {
  Mail mail;
  mail.subject = message.subject;
  if (withText) mail.text = message.text;
  mail.type = message.messageClass;
  mail.date = message.date;
  mail.conversation = message.conversationIndex;
  mail.flags = (message.unread ? kMapiUnread : 0) | (message.sent ? kMapiSent : 0) |
               (message.receipt ? kMapiReceiptRequested : 0);
  mail.originator = {0, message.senderName, message.senderAddress, message.senderAddress};
  for (const Recipient& each : message.recipients) {
    mail.recipients.push_back(
        {static_cast<std::uint32_t>(each.recipientClass), each.name, each.address, each.address});
  }
  for (const Attachment& each : message.attachments) {
    mail.files.push_back({each.position, {}, each.name});
  }
  return mail;
}

// The temporary files of a mail that is not handed out after all.
void RemoveFiles(const Mail& mail) {
  std::error_code ignored;
  for (const MailFile& file : mail.files) fs::remove(file.path, ignored);
}

// What the user does to a mail in the dialog; false when it is closed.
bool ChangeInDialog(const std::optional<std::string>& word, Mail& mail) {
  constexpr std::string_view kSubject = "change subject ";
  constexpr std::string_view kAdd = "add ";
  if (!word) return false;
  if (word->starts_with(kSubject)) {
    mail.subject = word->substr(kSubject.size());
  } else if (word->starts_with(kAdd)) {
    mail.recipients.push_back({1, word->substr(kAdd.size()), "", ""});
  } else if (*word != "send") {
    return false;
  }
  return true;
}

}  // namespace

MapiDesk::MapiDesk(fs::path place, std::function<void(std::string_view)> trouble)
    : store_(std::move(place)), trouble_(std::move(trouble)) {}

// The trouble is made outside the lock, because it may be that other calls are let in.
std::uint32_t MapiDesk::Guarded(std::string_view name, std::string_view arguments,
                                const std::function<std::uint32_t()>& call) {
  try {
    std::optional<std::string> word;
    {
      const std::lock_guard lock(mutex_);
      word = store_.Call(name, arguments);
    }
    if (word) {
      if (const std::optional<std::uint32_t> number = NumberIn(*word)) return *number;
      if (trouble_) trouble_(*word);
    }
    const std::lock_guard lock(mutex_);
    return call();
  } catch (const std::exception&) {
    return kMapiFailure;
  }
}

std::uint32_t MapiDesk::Note(std::string_view name, std::string_view arguments) {
  return Guarded(name, arguments, [] { return kMapiSuccess; });
}

MapiDesk::Session* MapiDesk::Find(std::uint32_t session) {
  const auto found = sessions_.find(session);
  return found == sessions_.end() ? nullptr : &found->second;
}

// The default profile is that of whoever uses the workstation, and asks for no password.
std::uint32_t MapiDesk::Logon(const std::string& profile, const std::string& password,
                              std::uint32_t flags, std::uint32_t& session) {
  return Guarded("MAPILogon", "profile=" + profile + " flags=" + std::to_string(flags),
                 [&]() -> std::uint32_t {
                   const std::optional<Account> account = store_.FindAccount(profile);
                   const bool trusted = profile.empty() && password.empty();
                   if (!account || (!trusted && account->password != password)) {
                     const bool closed = (flags & kMapiLogonUi) != 0 && store_.Dialog() == "cancel";
                     return closed ? kMapiUserAbort : kMapiLogonFailure;
                   }
                   session = ++lastSession_;
                   sessions_[session].account = *account;
                   return kMapiSuccess;
                 });
}

std::uint32_t MapiDesk::Logoff(std::uint32_t session) {
  return Guarded("MAPILogoff", Told(session, 0), [&] {
    return sessions_.erase(session) == 1 ? kMapiSuccess : kMapiInvalidSession;
  });
}

// Without the promise of an order the newest come first, so that nobody relies on the other one.
void MapiDesk::Walk(Session& session, bool fifo) {
  session.ids = store_.MessageIds(store_.KnownFolder(session.account.profile, kInbox));
  if (!fifo) std::reverse(session.ids.begin(), session.ids.end());
  session.fifo = fifo;
  session.at = 0;
}

// Finds the place of a message in the walk, which may have come after the walk began.
bool MapiDesk::Stand(Session& session, const std::string& id) {
  if (session.at < session.ids.size() && session.ids[session.at] == id) return true;
  auto place = std::find(session.ids.begin(), session.ids.end(), id);
  if (place == session.ids.end()) {
    Walk(session, session.fifo);
    place = std::find(session.ids.begin(), session.ids.end(), id);
  }
  session.at = static_cast<std::size_t>(place - session.ids.begin());
  return place != session.ids.end();
}

// No type means messages between people.
bool MapiDesk::Matches(const Session& session, const std::string& id, const std::string& type,
                       std::uint32_t flags) {
  constexpr std::string_view kBetweenPeople = "IPM";
  const std::optional<Message> message = store_.Read(session.account.profile, id);
  if (!message) return false;  // it has gone meanwhile
  if ((flags & kMapiUnreadOnly) != 0 && !message->unread) return false;
  const std::string_view wanted = type.empty() ? kBetweenPeople : std::string_view(type);
  const std::string_view have = message->messageClass;
  return quillon::EqualsIgnoreCase(have.substr(0, wanted.size()), wanted) &&
         (have.size() == wanted.size() || (type.empty() && have[wanted.size()] == '.'));
}

std::uint32_t MapiDesk::FindNext(std::uint32_t session, const std::string& type,
                                 const std::string& seed, std::uint32_t flags, std::string& id) {
  return Guarded("MAPIFindNext", Told(session, flags, "type=" + type + " seed=" + seed),
                 [&]() -> std::uint32_t {
                   Session* const known = Find(session);
                   if (known == nullptr) return kMapiInvalidSession;
                   const bool fifo = (flags & kMapiGuaranteeFifo) != 0;
                   std::size_t at = 0;
                   if (seed.empty() || fifo != known->fifo) Walk(*known, fifo);
                   if (!seed.empty()) {
                     if (!Stand(*known, seed)) return kMapiInvalidMessage;
                     at = known->at + 1;
                   }
                   while (at < known->ids.size() && !Matches(*known, known->ids[at], type, flags))
                     ++at;
                   if (at >= known->ids.size()) return kMapiNoMessages;
                   known->at = at;
                   id = known->ids[at];
                   return kMapiSuccess;
                 });
}

std::uint32_t MapiDesk::WriteFiles(const Message& message, Mail& mail) {
  std::error_code error;
  const fs::path directory = fs::temp_directory_path();
  for (std::size_t index = 0; index < mail.files.size(); ++index) {
    if (message.attachments[index].path.empty()) continue;  // a link
    fs::path file;
    do {  // until there is a name that no other program has
      file = directory / ("desk" + std::to_string(++lastFile_) + ".tmp");
      fs::copy_file(message.attachments[index].path, file, error);
    } while (error == std::errc::file_exists);
    if (error) {
      RemoveFiles(mail);
      return kMapiAttachmentWriteFailure;
    }
    mail.files[index].path = file;
  }
  return kMapiSuccess;
}

std::uint32_t MapiDesk::ReadMail(std::uint32_t session, const std::string& id, std::uint32_t flags,
                                 Mail& mail) {
  return Guarded("MAPIReadMail", Told(session, flags, "id=" + id), [&]() -> std::uint32_t {
    const Session* const known = Find(session);
    if (known == nullptr) return kMapiInvalidSession;
    std::optional<Message> message = store_.Read(known->account.profile, id);
    if (!message) return kMapiInvalidMessage;
    mail = MailOf(*message, (flags & kMapiEnvelopeOnly) == 0);
    if ((flags & (kMapiEnvelopeOnly | kMapiSuppressAttach)) == 0) {
      if (const std::uint32_t trouble = WriteFiles(*message, mail)) return trouble;
    }
    if ((flags & kMapiPeek) == 0 && message->unread) {
      message->unread = false;
      try {
        store_.Change(known->account.profile, *message);
      } catch (...) {
        RemoveFiles(mail);
        throw;
      }
    }
    return kMapiSuccess;
  });
}

std::uint32_t MapiDesk::ResolveParty(const Party& party, Recipient& recipient) {
  if (party.kind < 1 || party.kind > 3) return kMapiBadRecipType;
  recipient = {static_cast<int>(party.kind), party.name, party.address};
  if (!party.address.empty()) return kMapiSuccess;
  recipient.address = party.entryId;
  if (!party.entryId.empty()) return kMapiSuccess;
  const std::vector<Entry> entries = store_.Resolve(party.name);
  if (entries.empty()) return kMapiUnknownRecipient;
  if (entries.size() > 1) return kMapiAmbiguousRecipient;
  recipient.name = entries[0].name;
  recipient.address = entries[0].address;
  return kMapiSuccess;
}

std::uint32_t MapiDesk::Compose(const Mail& mail, Message& message) {
  message.subject = mail.subject;
  message.text = mail.text;
  if (!mail.type.empty()) message.messageClass = mail.type;
  message.conversationIndex = mail.conversation;
  message.receipt = (mail.flags & kMapiReceiptRequested) != 0;
  for (const Party& party : mail.recipients) {
    Recipient recipient;
    if (const std::uint32_t trouble = ResolveParty(party, recipient)) return trouble;
    message.recipients.push_back(recipient);
  }
  for (const MailFile& file : mail.files) {
    std::error_code error;
    if (file.path.empty() || !fs::exists(file.path, error)) return kMapiAttachmentNotFound;
    if (!fs::is_regular_file(file.path, error)) return kMapiAttachmentOpenFailure;
    const std::string name = file.name.empty() ? Utf8FromPath(file.path.filename()) : file.name;
    message.attachments.push_back({name, file.path, file.position, 1, {}});
  }
  return kMapiSuccess;
}

std::uint32_t MapiDesk::SendMail(std::uint32_t session, const Mail& mail, std::uint32_t flags) {
  return Guarded("MAPISendMail", Told(session, flags, Told(mail)), [&]() -> std::uint32_t {
    const Session* const known = Find(session);
    if (known == nullptr && session != 0) return kMapiInvalidSession;
    const std::optional<Account> account =
        known != nullptr ? known->account : store_.FindAccount({});
    if (!account) return kMapiLogonFailure;
    Mail sent = mail;
    if ((flags & kMapiDialog) != 0 && !ChangeInDialog(store_.Dialog(), sent)) return kMapiUserAbort;
    if (sent.recipients.empty()) return kMapiInvalidRecips;
    Message message;
    if (const std::uint32_t trouble = Compose(sent, message)) return trouble;
    store_.Send(*account, std::move(message));
    return kMapiSuccess;
  });
}

std::uint32_t MapiDesk::SaveMail(std::uint32_t session, const Mail& mail, std::string& id) {
  return Guarded("MAPISaveMail", Told(session, 0, "id=" + id + " " + Told(mail)),
                 [&]() -> std::uint32_t {
                   const Session* const known = Find(session);
                   if (known == nullptr) return kMapiInvalidSession;
                   const std::string& mailbox = known->account.profile;
                   Message message;
                   if (const std::uint32_t trouble = Compose(mail, message)) return trouble;
                   message.unread = (mail.flags & kMapiUnread) != 0;
                   if (id.empty()) {
                     message.date = DateNow();
                     id = store_.Add(store_.KnownFolder(mailbox, kInbox), message);
                     return kMapiSuccess;
                   }
                   const std::optional<Message> old = store_.Read(mailbox, id);
                   if (!old) return kMapiInvalidMessage;
                   message.id = id;
                   message.date = old->date;
                   message.senderName = old->senderName;
                   message.senderAddress = old->senderAddress;
                   return store_.Change(mailbox, message) ? kMapiSuccess : kMapiInvalidMessage;
                 });
}

// As mail programs do: it is in Deleted Items afterwards, and deleted there it is gone.
std::uint32_t MapiDesk::DeleteMail(std::uint32_t session, const std::string& id) {
  return Guarded("MAPIDeleteMail", Told(session, 0, "id=" + id), [&]() -> std::uint32_t {
    const Session* const known = Find(session);
    if (known == nullptr) return kMapiInvalidSession;
    const std::string& mailbox = known->account.profile;
    const Folder deleted = store_.KnownFolder(mailbox, kDeletedItems);
    const bool done =
        store_.Has(deleted, id) ? store_.Remove(mailbox, id) : store_.Move(mailbox, id, deleted);
    return done ? kMapiSuccess : kMapiInvalidMessage;
  });
}

// "send" leaves what is there, and "add all" adds whoever the book has.
std::uint32_t MapiDesk::Address(std::uint32_t session, std::vector<Party>& parties) {
  const std::string count = std::to_string(parties.size());
  return Guarded("MAPIAddress", Told(session, 0, "parties=" + count), [&]() -> std::uint32_t {
    if (Find(session) == nullptr) return kMapiInvalidSession;
    const std::optional<std::string> word = store_.Dialog();
    if (word == "send") return kMapiSuccess;
    if (word != "add all") return kMapiUserAbort;
    for (const Entry& entry : store_.AddressBook()) {
      parties.push_back({1, entry.name, entry.address, entry.address});
    }
    return kMapiSuccess;
  });
}

std::uint32_t MapiDesk::ResolveName(std::uint32_t session, const std::string& name,
                                    std::uint32_t flags, Party& party) {
  return Guarded("MAPIResolveName", Told(session, flags, "name=" + name), [&]() -> std::uint32_t {
    if (session != 0 && Find(session) == nullptr) return kMapiInvalidSession;
    std::vector<Entry> entries = store_.Resolve(name);
    if (entries.size() != 1 && (flags & kMapiDialog) != 0) {
      // "pick 2" takes the second one of those offered; without a display nobody can.
      const std::string word = store_.Dialog().value_or("");
      const std::optional<std::uint32_t> pick =
          word.starts_with("pick ") ? NumberIn(std::string_view(word).substr(5)) : std::nullopt;
      if (!pick || *pick < 1 || *pick > entries.size()) return kMapiUserAbort;
      entries = {entries[*pick - 1]};
    }
    if (entries.empty()) return kMapiUnknownRecipient;
    if (entries.size() > 1) return kMapiAmbiguousRecipient;
    party = {1, entries[0].name, entries[0].address, entries[0].address};
    return kMapiSuccess;
  });
}

}  // namespace desk
