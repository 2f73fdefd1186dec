// deskmapi.dll: the desk as a Simple MAPI provider, which mapi32.dll hands its calls on to. Texts
// are in the ANSI code page. A message, once read, is one buffer.
#include <windows.h>
#include <cstring>
#include <string>
#include <vector>

#include "Blocks.h"
#include "Records.h"
#include "desk/MapiDesk.h"
#include "desk/win32/AnsiText.h"
#include "desk/win32/Trouble.h"

namespace deskmapi {
namespace {

using desk::MapiDesk;
using desk::Utf8From;

MapiDesk& Desk() {
  static MapiDesk desk(desk::Store::Place(), desk::MakeTrouble);
  return desk;
}

Blocks& Given() {
  static Blocks blocks;
  return blocks;
}

template <class Char>
desk::Party PartyOf(const PartyRecord<Char>& record) {
  desk::Party party{record.kind, Utf8From(record.name), Utf8From(record.address), {}};
  if (record.entryId != nullptr) {
    const std::string bytes(static_cast<const char*>(record.entryId), record.entryIdSize);
    party.entryId = Utf8From(bytes.c_str());
  }
  return party;
}

// Nothing for a record whose count promises more than there is.
template <class Char>
bool MailOf(const MailRecord<Char>* record, desk::Mail& mail) {
  if (record == nullptr || (record->recipientCount != 0 && record->recipients == nullptr) ||
      (record->fileCount != 0 && record->files == nullptr)) {
    return false;
  }
  mail.subject = Utf8From(record->subject);
  mail.text = Utf8From(record->text);
  mail.type = Utf8From(record->type);
  mail.conversation = Utf8From(record->conversation);
  mail.flags = record->flags;
  for (std::uint32_t index = 0; index < record->recipientCount; ++index) {
    mail.recipients.push_back(PartyOf(record->recipients[index]));
  }
  for (std::uint32_t index = 0; index < record->fileCount; ++index) {
    const FileRecord<Char>& file = record->files[index];
    mail.files.push_back(
        {file.position, desk::PathFromUtf8(Utf8From(file.path)), Utf8From(file.name)});
  }
  return true;
}

// Nothing may leave the library but a number.
template <class Call>
ULONG Guarded(Call call) noexcept {
  try {
    return call();
  } catch (...) {
    return desk::kMapiFailure;
  }
}

template <class Char>
ULONG Send(ULONG session, const MailRecord<Char>* record, ULONG flags) {
  return Guarded([&]() -> ULONG {
    desk::Mail mail;
    if (!MailOf(record, mail)) return desk::kMapiFailure;
    return Desk().SendMail(session, mail, flags);
  });
}

ULONG Refuse(const char* name) {
  return Guarded([&]() -> ULONG {
    const ULONG number = Desk().Note(name, {});
    return number != 0 ? number : ULONG{desk::kMapiNotSupported};
  });
}

}  // namespace

extern "C" {

ULONG WINAPI MAPILogon(ULONG, const char* profile, const char* password, ULONG flags, ULONG,
                       ULONG* session) {
  return Guarded([&]() -> ULONG {
    if (session == nullptr) return desk::kMapiFailure;
    std::uint32_t handle = 0;
    const ULONG number = Desk().Logon(Utf8From(profile), Utf8From(password), flags, handle);
    if (number == desk::kMapiSuccess) *session = handle;
    return number;
  });
}

ULONG WINAPI MAPILogoff(ULONG session, ULONG, ULONG, ULONG) {
  return Guarded([&] { return Desk().Logoff(session); });
}

ULONG WINAPI MAPISendMail(ULONG session, ULONG, const MailRecord<char>* mail, ULONG flags, ULONG) {
  return Send(session, mail, flags);
}

ULONG WINAPI MAPISendMailW(ULONG session, ULONG, const MailRecord<wchar_t>* mail, ULONG flags,
                           ULONG) {
  return Send(session, mail, flags);
}

ULONG WINAPI MAPIFindNext(ULONG session, ULONG, const char* type, const char* seed, ULONG flags,
                          ULONG, char* id) {
  return Guarded([&]() -> ULONG {
    if (id == nullptr) return desk::kMapiFailure;
    std::string found;
    const ULONG number = Desk().FindNext(session, Utf8From(type), Utf8From(seed), flags, found);
    if (number == desk::kMapiSuccess) std::memcpy(id, found.c_str(), found.size() + 1);
    return number;
  });
}

ULONG WINAPI MAPIReadMail(ULONG session, ULONG, const char* id, ULONG flags, ULONG,
                          const MailRecord<char>** result) {
  return Guarded([&]() -> ULONG {
    if (result == nullptr) return desk::kMapiFailure;
    desk::Mail mail;
    const ULONG number = Desk().ReadMail(session, Utf8From(id), flags, mail);
    if (number == desk::kMapiSuccess) *result = Given().HandOut(mail);
    return number;
  });
}

ULONG WINAPI MAPISaveMail(ULONG session, ULONG, const MailRecord<char>* record, ULONG, ULONG,
                          char* id) {
  return Guarded([&]() -> ULONG {
    desk::Mail mail;
    if (id == nullptr || !MailOf(record, mail)) return desk::kMapiFailure;
    std::string saved = Utf8From(id);
    const ULONG number = Desk().SaveMail(session, mail, saved);
    if (number == desk::kMapiSuccess) std::memcpy(id, saved.c_str(), saved.size() + 1);
    return number;
  });
}

ULONG WINAPI MAPIDeleteMail(ULONG session, ULONG, const char* id, ULONG, ULONG) {
  return Guarded([&] { return Desk().DeleteMail(session, Utf8From(id)); });
}

ULONG WINAPI MAPIFreeBuffer(const void* record) {
  return Guarded([&]() -> ULONG {
    if (record == nullptr) return desk::kMapiSuccess;
    const bool known = Given().Free(record);
    const ULONG number = Desk().Note(
        "MAPIFreeBuffer", (known ? "left=" : "unknown left=") + std::to_string(Given().Count()));
    return known ? number : ULONG{desk::kMapiFailure};
  });
}

ULONG WINAPI MAPIResolveName(ULONG session, ULONG, const char* name, ULONG flags, ULONG,
                             const PartyRecord<char>** result) {
  return Guarded([&]() -> ULONG {
    if (result == nullptr) return desk::kMapiFailure;
    desk::Party party;
    const ULONG number = Desk().ResolveName(session, Utf8From(name), flags, party);
    if (number == desk::kMapiSuccess) *result = Given().HandOut(std::vector{party});
    return number;
  });
}

ULONG WINAPI MAPIAddress(ULONG session, ULONG, const char*, ULONG fields, const char*, ULONG count,
                         const PartyRecord<char>* given, ULONG, ULONG, ULONG* newCount,
                         const PartyRecord<char>** chosen) {
  return Guarded([&]() -> ULONG {
    if (fields > 4) return desk::kMapiInvalidEditFields;
    if (count != 0 && given == nullptr) return desk::kMapiInvalidRecips;
    if (newCount == nullptr || chosen == nullptr) return desk::kMapiFailure;
    std::vector<desk::Party> parties;
    for (ULONG index = 0; index < count; ++index) parties.push_back(PartyOf(given[index]));
    const ULONG number = Desk().Address(session, parties);
    if (number != desk::kMapiSuccess) return number;
    *newCount = static_cast<ULONG>(parties.size());
    *chosen = Given().HandOut(parties);
    return number;
  });
}

// These are all dialog, and there is nobody to look at it.
ULONG WINAPI MAPIDetails(ULONG, ULONG, const PartyRecord<char>*, ULONG, ULONG) {
  return Refuse("MAPIDetails");
}
ULONG WINAPI MAPISendDocuments(ULONG, const char*, const char*, const char*, ULONG) {
  return Refuse("MAPISendDocuments");
}

// For rundll32: makes the store when there is none.
void CALLBACK OpenDesk(HWND, HINSTANCE, LPSTR, int) {
  Guarded([] { return Desk().Note("OpenDesk", {}); });
}

}  // extern "C"

}  // namespace deskmapi
