// vbamap32.dll: the calls that Visual Basic programs make of Simple MAPI, over those of mapi32.dll.
// A session is one of mapi32's, and the program may hand it to either library. What a call ends
// with is mapi32's number, unless the fault file has a word for this library's own call.
#include <windows.h>
#include <map>
#include <memory>
#include <oleauto.h>
#include <string>

#include "VbRecords.h"
#include "desk/MapiDesk.h"
#include "desk/win32/Trouble.h"

namespace vbamap32 {
namespace {

// The log and the fault file are all that is wanted of the desk here.
ULONG Note(const char* name, const std::string& arguments) {
  static desk::MapiDesk desk(desk::Store::Place(), desk::MakeTrouble);
  return desk.Note(name, arguments);
}

template <class... Arguments>
ULONG CallMapi(const char* name, Arguments... arguments) {
  static const HMODULE library = LoadLibraryW(L"mapi32.dll");
  using Function = ULONG(WINAPI*)(Arguments...);
  const auto function = reinterpret_cast<Function>(
      reinterpret_cast<void*>(library == nullptr ? nullptr : GetProcAddress(library, name)));
  return function == nullptr ? ULONG{desk::kMapiNotSupported} : function(arguments...);
}

// A call of this library: the fault file's word first, and nothing leaves it but a number.
template <class Call>
ULONG Guarded(const char* name, const std::string& arguments, Call call) noexcept {
  try {
    const ULONG number = Note(name, arguments);
    return number != 0 ? number : call();
  } catch (...) {
    return desk::kMapiFailure;
  }
}

struct FreeMapi {
  void operator()(const void* record) const { CallMapi<const void*>("MAPIFreeBuffer", record); }
};
using ReadMail = std::unique_ptr<const CMail, FreeMapi>;

// Between BMAPIReadMail, which says how many records there are, and BMAPIGetReadMail.
std::map<ULONG, ReadMail>& Waiting() {
  static std::map<ULONG, ReadMail> waiting;
  return waiting;
}

// The same between BMAPIAddress and BMAPIGetAddress.
std::map<ULONG, std::unique_ptr<const CParty, FreeMapi>>& Chosen() {
  static std::map<ULONG, std::unique_ptr<const CParty, FreeMapi>> chosen;
  return chosen;
}

ULONG Get(const CMail& native, VbMail& mail, SAFEARRAY** parties, SAFEARRAY** files,
          VbParty& originator) {
  auto* const vbParties =
      ArrayOf<VbParty>(parties, static_cast<std::int32_t>(native.recipientCount));
  auto* const vbFiles = ArrayOf<VbFile>(files, static_cast<std::int32_t>(native.fileCount));
  if ((native.recipientCount != 0 && vbParties == nullptr) ||
      (native.fileCount != 0 && vbFiles == nullptr)) {
    return desk::kMapiFailure;
  }
  Put(mail, native);
  for (ULONG index = 0; index < native.recipientCount; ++index) {
    Put(vbParties[index], native.recipients[index]);
  }
  for (ULONG index = 0; index < native.fileCount; ++index) {
    Put(vbFiles[index], native.files[index]);
  }
  if (native.originator != nullptr) Put(originator, *native.originator);
  return desk::kMapiSuccess;
}

ULONG Refuse(const char* name) {
  return Guarded(name, {}, [] { return ULONG{desk::kMapiNotSupported}; });
}

}  // namespace

extern "C" {

ULONG WINAPI BMAPILogon(ULONG window, const char* profile, const char* password, ULONG flags, ULONG,
                        ULONG* session) {
  return Guarded("BMAPILogon", "flags=" + std::to_string(flags), [&] {
    return CallMapi<ULONG, const char*, const char*, ULONG, ULONG, ULONG*>(
        "MAPILogon", window, profile, password, flags, 0, session);
  });
}

ULONG WINAPI BMAPILogoff(ULONG session, ULONG window, ULONG flags, ULONG) {
  return Guarded("BMAPILogoff", {}, [&] {
    return CallMapi<ULONG, ULONG, ULONG, ULONG>("MAPILogoff", session, window, flags, 0);
  });
}

ULONG WINAPI BMAPISendMail(ULONG session, ULONG window, const VbMail* mail, SAFEARRAY** parties,
                           SAFEARRAY** files, ULONG flags, ULONG) {
  return Guarded("BMAPISendMail", "flags=" + std::to_string(flags), [&]() -> ULONG {
    const std::unique_ptr<NativeMail> native = Native(*mail, parties, files);
    if (native == nullptr) return desk::kMapiFailure;
    return CallMapi<ULONG, ULONG, const CMail*, ULONG, ULONG>("MAPISendMail", session, window,
                                                              &native->mail, flags, 0);
  });
}

ULONG WINAPI BMAPISaveMail(ULONG session, ULONG window, const VbMail* mail, SAFEARRAY** parties,
                           SAFEARRAY** files, ULONG flags, ULONG, BSTR* id) {
  return Guarded("BMAPISaveMail", {}, [&]() -> ULONG {
    const std::unique_ptr<NativeMail> native = Native(*mail, parties, files);
    if (native == nullptr) return desk::kMapiFailure;
    char saved[512];
    lstrcpynA(saved, Ansi(*id), sizeof saved);
    const ULONG number = CallMapi<ULONG, ULONG, const CMail*, ULONG, ULONG, char*>(
        "MAPISaveMail", session, window, &native->mail, flags, 0, saved);
    if (number == 0) Put(*id, saved);
    return number;
  });
}

ULONG WINAPI BMAPIFindNext(ULONG session, ULONG window, BSTR* type, BSTR* seed, ULONG flags, ULONG,
                           BSTR* id) {
  return Guarded("BMAPIFindNext", "flags=" + std::to_string(flags), [&] {
    char found[512];
    const ULONG number = CallMapi<ULONG, ULONG, const char*, const char*, ULONG, ULONG, char*>(
        "MAPIFindNext", session, window, Ansi(*type), Ansi(*seed), flags, 0, found);
    if (number == 0) Put(*id, found);
    return number;
  });
}

ULONG WINAPI BMAPIReadMail(ULONG* handle, LONG* partyCount, LONG* fileCount, ULONG session,
                           ULONG window, BSTR* id, ULONG flags, ULONG) {
  return Guarded("BMAPIReadMail", "flags=" + std::to_string(flags), [&] {
    const CMail* record = nullptr;
    const ULONG number = CallMapi<ULONG, ULONG, const char*, ULONG, ULONG, const CMail**>(
        "MAPIReadMail", session, window, Ansi(*id), flags, 0, &record);
    if (number != 0) return number;
    ReadMail mail(record);
    *partyCount = static_cast<LONG>(mail->recipientCount);
    *fileCount = static_cast<LONG>(mail->fileCount);
    *handle = Waiting().empty() ? 1 : Waiting().rbegin()->first + 1;
    Waiting()[*handle] = std::move(mail);
    return number;
  });
}

// The handle is used up, whatever comes of it.
ULONG WINAPI BMAPIGetReadMail(ULONG handle, VbMail* mail, SAFEARRAY** parties, SAFEARRAY** files,
                              VbParty* originator) {
  return Guarded("BMAPIGetReadMail", {}, [&]() -> ULONG {
    const auto waiting = Waiting().extract(handle);
    if (waiting.empty()) return desk::kMapiFailure;
    return Get(*waiting.mapped(), *mail, parties, files, *originator);
  });
}

ULONG WINAPI BMAPIDeleteMail(ULONG session, ULONG window, const char* id, ULONG flags, ULONG) {
  return Guarded("BMAPIDeleteMail", {}, [&] {
    return CallMapi<ULONG, ULONG, const char*, ULONG, ULONG>("MAPIDeleteMail", session, window, id,
                                                             flags, 0);
  });
}

ULONG WINAPI BMAPIResolveName(ULONG session, ULONG window, const char* name, ULONG flags, ULONG,
                              VbParty* party) {
  return Guarded("BMAPIResolveName", "flags=" + std::to_string(flags), [&] {
    const CParty* record = nullptr;
    const ULONG number = CallMapi<ULONG, ULONG, const char*, ULONG, ULONG, const CParty**>(
        "MAPIResolveName", session, window, name, flags, 0, &record);
    if (number != 0) return number;
    const std::unique_ptr<const CParty, FreeMapi> resolved(record);
    Put(*party, *resolved);
    return number;
  });
}

ULONG WINAPI BMAPIAddress(ULONG* handle, ULONG session, ULONG window, BSTR* caption, ULONG fields,
                          BSTR* label, LONG* count, SAFEARRAY** parties, ULONG flags, ULONG) {
  return Guarded("BMAPIAddress", "parties=" + std::to_string(*count), [&]() -> ULONG {
    VbMail mail{};
    mail.recipientCount = *count;
    const std::unique_ptr<NativeMail> native = Native(mail, parties, nullptr);
    if (native == nullptr) return desk::kMapiFailure;
    ULONG chosenCount = 0;
    const CParty* chosen = nullptr;
    const ULONG number = CallMapi<ULONG, ULONG, const char*, ULONG, const char*, ULONG,
                                  const CParty*, ULONG, ULONG, ULONG*, const CParty**>(
        "MAPIAddress", session, window, Ansi(*caption), fields, Ansi(*label),
        static_cast<ULONG>(*count), native->parties.data(), flags, 0, &chosenCount, &chosen);
    if (number != 0) return number;
    *count = static_cast<LONG>(chosenCount);
    *handle = Chosen().empty() ? 1 : Chosen().rbegin()->first + 1;
    Chosen()[*handle].reset(chosen);
    return number;
  });
}
// The handle is used up, whatever comes of it.
ULONG WINAPI BMAPIGetAddress(ULONG handle, LONG count, SAFEARRAY** parties) {
  return Guarded("BMAPIGetAddress", {}, [&]() -> ULONG {
    const auto chosen = Chosen().extract(handle);
    auto* const vbParties = ArrayOf<VbParty>(parties, count);
    if (chosen.empty() || vbParties == nullptr) return desk::kMapiFailure;
    for (LONG index = 0; index < count; ++index) {
      Put(vbParties[index], chosen.mapped().get()[index]);
    }
    return desk::kMapiSuccess;
  });
}

// This is all dialog, and there is nobody to look at it.
ULONG WINAPI BMAPIDetails(ULONG, ULONG, VbParty*, ULONG, ULONG) {
  return Refuse("BMAPIDetails");
}

}  // extern "C"

}  // namespace vbamap32
