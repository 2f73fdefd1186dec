// The sample provider: shows how a mail system is made known to Quillon. What the functions have to
// do is said in sdk/quillon_provider.h; what they do here is in mail_directory.h. This file is what
// lies in between: it translates records, and lets nothing but a number out.
#include <algorithm>
#include <cstdlib>
#include <map>

#include "mail_directory.h"
#include "quillon_provider.h"

namespace {

using sample::Failure;
using sample::MailDirectory;

struct Session {
  MailDirectory mail;
  std::string user;
};

// All calls come on one thread, so that nothing has to be locked.
struct State {
  std::map<int, Session> sessions;
  int nextSession = 1;
  Failure lastFailure{0, {}};  // for ErrorText
};

State& TheState() {
  static State state;
  return state;
}

Session& SessionOf(const QuillonCall* call) {
  auto& sessions = TheState().sessions;
  const auto found = sessions.find(call->session);
  if (found == sessions.end()) throw Failure{sample::kNoSession, {}};
  return found->second;
}

// Runs the body of a function. Whatever goes wrong becomes a number here.
template <class Body>
QuillonInt32 Run(Body&& body) noexcept {
  auto& lastFailure = TheState().lastFailure;
  try {
    body();
    return QUILLON_SUCCESS;
  } catch (const Failure& failure) {
    lastFailure = failure;
  } catch (const std::exception& error) {  // of a file, as a rule
    lastFailure = {sample::kFilesFailed, error.what()};
  } catch (...) {
    lastFailure = {sample::kFilesFailed, {}};
  }
  return lastFailure.number;
}

std::string TextOf(const QuillonText& text) {
  return {text.bytes, text.length};
}

// Good as long as the string is, and not changed.
QuillonText TextFrom(const std::string& text) {
  return {text.data(), static_cast<QuillonUint32>(text.size())};
}

sample::Party PartyOf(const QuillonParty& party) {
  return {party.kind, TextOf(party.name), TextOf(party.address)};
}

QuillonParty PartyFrom(const sample::Party& party) {
  return {party.kind, TextFrom(party.name), TextFrom(party.address)};
}

// Of a date as mail_directory.h has it; any other becomes one that is not known.
QuillonTime TimeFrom(const std::string& date) {
  if (date.size() != 19) return {};
  const auto number = [&](std::size_t at, std::size_t digits) {
    int value = 0;
    for (const char c : date.substr(at, digits)) value = value * 10 + (c - '0');
    return value;
  };
  return {number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2), number(17, 2)};
}

// Folders have no folders in them here.
std::string FolderOf(const QuillonFolder* folder) {
  if (folder->count == 0) return "inbox";
  if (folder->count > 1) throw Failure{sample::kNoFolder, TextOf(folder->names[1])};
  return TextOf(folder->names[0]);
}

QuillonInt32 QUILLON_CALL Login(const QuillonCall*, const QuillonLogin* login,
                                QuillonInt32* session) {
  return Run([&] {
    std::string place = TextOf(login->postOffice);
    const char* const usual = std::getenv("QUILLON_SAMPLE_MAIL");
    if (place.empty() && usual != nullptr) place = usual;
    if (place.empty() || login->name.length == 0) throw Failure{QUILLON_NEED_LOGIN, {}};
    const MailDirectory mail(sample::PathFrom(place));
    const auto user = mail.Login(TextOf(login->name), TextOf(login->password));
    auto& state = TheState();
    state.sessions.insert({state.nextSession, {mail, user}});
    *session = state.nextSession++;
  });
}

QuillonInt32 QUILLON_CALL Logout(const QuillonCall* call) {
  return Run([&] {
    SessionOf(call);
    TheState().sessions.erase(call->session);
  });
}

QuillonInt32 QUILLON_CALL Send(const QuillonCall* call, const QuillonMessage* given) {
  return Run([&] {
    const Session& session = SessionOf(call);
    sample::Message message;
    message.subject = TextOf(given->subject);
    message.text = TextOf(given->text);
    message.from = PartyOf(given->from);
    message.receipt = (given->flags & QUILLON_MESSAGE_RECEIPT) != 0;
    message.importance = given->importance;
    for (QuillonUint32 i = 0; i < given->recipientCount; ++i) {
      message.recipients.push_back(PartyOf(given->recipients[i]));
    }
    for (QuillonUint32 i = 0; i < given->fileCount; ++i) {
      const QuillonFile& file = given->files[i];
      message.attachments.push_back({TextOf(file.name), sample::PathFrom(TextOf(file.path))});
    }
    session.mail.Send(session.user, message);
  });
}

// The names of one kind, for a list.
std::string NamesOf(const sample::Message& message, int kind) {
  std::string names;
  for (const auto& one : message.recipients) {
    if (one.kind != kind) continue;
    if (!names.empty()) names += ", ";
    names += one.name.empty() ? one.address : one.name;
  }
  return names;
}

// Whether Quillon wants to have more of them.
bool Pass(const QuillonListing* listing, const std::string& id, bool unread,
          const sample::Message& message) {
  const std::string to = NamesOf(message, QUILLON_TO);
  const std::string cc = NamesOf(message, QUILLON_CC);
  QuillonHeader header{};
  header.size = sizeof header;
  header.flags =
      (unread ? QUILLON_MESSAGE_UNREAD : 0) | (message.receipt ? QUILLON_MESSAGE_RECEIPT : 0);
  header.id = TextFrom(id);
  header.subject = TextFrom(message.subject);
  header.from = PartyFrom(message.from);
  header.to = TextFrom(to);
  header.cc = TextFrom(cc);
  header.date = TimeFrom(message.date);
  header.importance = message.importance;
  header.fileCount = static_cast<QuillonUint32>(message.attachments.size());
  return listing->Found(listing->context, &header) == 0;
}

QuillonInt32 QUILLON_CALL List(const QuillonCall* call, const QuillonListing* listing) {
  return Run([&] {
    const Session& session = SessionOf(call);
    // They are in the order of their dates anyway.
    for (const auto& id : session.mail.List(session.user, FolderOf(listing->folder))) {
      try {
        const bool unread = session.mail.IsUnread(session.user, id);
        if (!unread && (listing->flags & QUILLON_LIST_UNREAD) != 0) continue;
        if (!Pass(listing, id, unread, session.mail.Read(session.user, id))) return;
      } catch (const Failure& failure) {
        if (failure.number != sample::kNoMessage) throw;  // else it was deleted meanwhile
      }
    }
  });
}

QuillonInt32 QUILLON_CALL Read(const QuillonCall* call, const QuillonReading* reading) {
  return Run([&] {
    const Session& session = SessionOf(call);
    const std::string id = TextOf(reading->id);
    const sample::Message message = session.mail.Read(session.user, id);
    std::vector<QuillonParty> recipients;
    for (const auto& one : message.recipients) recipients.push_back(PartyFrom(one));
    QuillonMessage record{};
    record.size = sizeof record;
    record.flags = message.receipt ? QUILLON_MESSAGE_RECEIPT : 0;
    record.subject = TextFrom(message.subject);
    record.text = TextFrom(message.text);
    record.from = PartyFrom(message.from);
    record.recipientCount = static_cast<QuillonUint32>(recipients.size());
    record.recipients = recipients.data();
    record.date = TimeFrom(message.date);
    record.importance = message.importance;
    if (reading->Message(reading->context, &record) != 0) return;
    for (const auto& attachment : message.attachments) {
      if ((reading->flags & QUILLON_READ_NO_FILES) != 0) break;
      const QuillonText name = TextFrom(attachment.name);
      QuillonText path{};
      if (reading->NewFile(reading->context, &name, &path) != 0) return;
      sample::CopyInto(attachment.file, sample::PathFrom(TextOf(path)));
    }
    if ((reading->flags & QUILLON_READ_PEEK) == 0) session.mail.MarkRead(session.user, id);
  });
}

QuillonInt32 QUILLON_CALL Delete(const QuillonCall* call, const QuillonText* id) {
  return Run([&] {
    const Session& session = SessionOf(call);
    session.mail.Delete(session.user, TextOf(*id));
  });
}

QuillonInt32 QUILLON_CALL Move(const QuillonCall* call, const QuillonText* id,
                               const QuillonFolder* folder) {
  return Run([&] {
    const Session& session = SessionOf(call);
    session.mail.Move(session.user, TextOf(*id), FolderOf(folder));
  });
}

QuillonInt32 QUILLON_CALL UnreadCount(const QuillonCall* call, const QuillonFolder* folder,
                                      QuillonUint32* count) {
  return Run([&] {
    const Session& session = SessionOf(call);
    const auto ids = session.mail.List(session.user, FolderOf(folder));
    *count = static_cast<QuillonUint32>(std::count_if(ids.begin(), ids.end(), [&](const auto& id) {
      return session.mail.IsUnread(session.user, id);
    }));
  });
}

QuillonInt32 QUILLON_CALL SetSession(const QuillonCall* call) {
  return Run([&] { SessionOf(call); });
}

QuillonInt32 QUILLON_CALL Books(const QuillonCall* call, const QuillonBooks* books) {
  return Run([&] {
    for (const auto& name : SessionOf(call).mail.Books()) {
      const QuillonText text = TextFrom(name);
      if (books->Found(books->context, &text) != 0) return;
    }
  });
}

QuillonInt32 QUILLON_CALL Entries(const QuillonCall* call, const QuillonEntries* part) {
  return Run([&] {
    const Session& session = SessionOf(call);
    for (const auto& entry : session.mail.Entries(TextOf(part->book), part->from, part->most)) {
      QuillonEntry record{};
      record.size = sizeof record;
      record.flags = entry.isGroup ? QUILLON_ENTRY_GROUP : 0;
      record.name = TextFrom(entry.name);
      record.address = TextFrom(entry.address);
      if (part->Found(part->context, &record) != 0) return;
    }
  });
}

const char* MeaningOf(QuillonInt32 number) {
  switch (number) {
    case sample::kNoUser:
      return "There is no such user";
    case sample::kWrongPassword:
      return "The password is wrong";
    case sample::kNoSession:
      return "The session has ended";
    case sample::kNoMessage:
      return "The message is gone";
    case sample::kNoFolder:
      return "There is no such folder";
    case sample::kBadName:
      return "The name cannot be used";
    case sample::kFilesFailed:
      return "The files of the mail directory could not be read or written";
    case sample::kNoBook:
      return "There is no such address book";
    default:
      return nullptr;
  }
}

void QUILLON_CALL ErrorText(QuillonInt32 number, void* context,
                            void(QUILLON_CALL* pass)(void* context, const QuillonText* text)) {
  Run([&] {
    const char* const meaning = MeaningOf(number);
    if (meaning == nullptr) return;
    std::string text = meaning;
    const auto& lastFailure = TheState().lastFailure;
    if (number == lastFailure.number && !lastFailure.about.empty()) {
      text += ": " + lastFailure.about;
    }
    text += ".";
    const QuillonText passed = TextFrom(text);
    pass(context, &passed);
  });
}

}  // namespace

// Members that are not named are null: this mail system's sessions keep their numbers, and it
// has no window to choose addresses from.
extern "C" const QuillonProviderTable* QUILLON_CALL QuillonProviderGetTable(QuillonUint32 version) {
  static QuillonProviderTable table{};
  table.size = sizeof table;
  table.version = QUILLON_PROVIDER_VERSION;
  table.Login = &Login;
  table.Logout = &Logout;
  table.Send = &Send;
  table.List = &List;
  table.Read = &Read;
  table.Delete = &Delete;
  table.Move = &Move;
  table.UnreadCount = &UnreadCount;
  table.SetSession = &SetSession;
  table.ErrorText = &ErrorText;
  table.Books = &Books;
  table.Entries = &Entries;
  return version == QUILLON_PROVIDER_VERSION ? &table : nullptr;
}
