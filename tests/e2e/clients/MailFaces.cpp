// A compiled program that uses Simple MAPI directly, for the tests of the desk: by the system's
// header for mapi32.dll, and for vbamap32.dll by the offsets that the fields of Visual Basic's
// records have. So what it reads, and what it says it sent, owes nothing to the desk's records.
//
//   MailFaces mapi|vba FILE...   ann sends the files to bob, who reads them and deletes the message
//   MailFaces send|read FILE...  one half of it, through mapi32.dll
//   MailFaces wide SUBJECT       ann sends to bob and to a stranger in UTF-16
//   MailFaces number CALL        prints what a call of mapi32.dll ends with that cannot succeed
//
// Each thing that is not as it should be is a line; exit status 0 when there is none.
#include <windows.h>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mapi.h>
#include <oleauto.h>
#include <string>
#include <string_view>
#include <vector>

namespace {

int& Failures() {
  static int failures = 0;
  return failures;
}

void Expect(bool holds, const std::string& what) {
  if (holds) return;
  std::printf("%s\n", what.c_str());
  ++Failures();
}

void ExpectText(std::string_view wanted, const char* found, const std::string& what) {
  Expect(found != nullptr && wanted == found,
         what + ": " + (found == nullptr ? "none" : std::string(found)));
}

template <class Function>
Function Find(const wchar_t* library, const char* name) {
  const HMODULE loaded = LoadLibraryW(library);
  const auto found =
      reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(loaded, name)));
  if (found == nullptr) {
    std::printf("%s is missing\n", name);
    std::exit(2);
  }
  return found;
}

std::string BytesOf(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string NameIn(const std::string& path) {
  return path.substr(path.find_last_of('\\') + 1);
}

// The texts of the message, with a letter that is not ASCII (in Windows-1252).
constexpr const char kSubject[] = "Price 5\x80";
constexpr const char kText[] = "First line\r\n\r\nsecond \xE9";

// --- mapi32.dll

struct Mapi {
  LPMAPILOGON logon = Find<LPMAPILOGON>(L"mapi32.dll", "MAPILogon");
  LPMAPILOGOFF logoff = Find<LPMAPILOGOFF>(L"mapi32.dll", "MAPILogoff");
  LPMAPISENDMAIL send = Find<LPMAPISENDMAIL>(L"mapi32.dll", "MAPISendMail");
  LPMAPIFINDNEXT findNext = Find<LPMAPIFINDNEXT>(L"mapi32.dll", "MAPIFindNext");
  LPMAPIREADMAIL read = Find<LPMAPIREADMAIL>(L"mapi32.dll", "MAPIReadMail");
  LPMAPISAVEMAIL save = Find<LPMAPISAVEMAIL>(L"mapi32.dll", "MAPISaveMail");
  LPMAPIDELETEMAIL remove = Find<LPMAPIDELETEMAIL>(L"mapi32.dll", "MAPIDeleteMail");
  LPMAPIFREEBUFFER free = Find<LPMAPIFREEBUFFER>(L"mapi32.dll", "MAPIFreeBuffer");
  LPMAPIRESOLVENAME resolve = Find<LPMAPIRESOLVENAME>(L"mapi32.dll", "MAPIResolveName");

  LHANDLE LogOn(const char* name) const {
    LHANDLE session = 0;
    std::string profile = name;
    std::string password = "secret";
    const ULONG number = logon(0, profile.data(), password.data(), MAPI_NEW_SESSION, 0, &session);
    Expect(number == SUCCESS_SUCCESS && session != 0, "MAPILogon: " + std::to_string(number));
    return session;
  }
};

void SendByMapi(const Mapi& mapi, LHANDLE session, const std::vector<std::string>& paths) {
  std::string bob = "Bob Baker";
  std::string address = "SMTP:stranger@outside.example";
  std::string shown = "shown.bin";
  std::string subject = kSubject;
  std::string text = kText;
  std::vector<std::string> names = paths;
  std::array<MapiRecipDesc, 2> recipients{};
  recipients[0].ulRecipClass = MAPI_TO;
  recipients[0].lpszName = bob.data();
  recipients[1].ulRecipClass = MAPI_CC;
  recipients[1].lpszName = address.data() + 5;
  recipients[1].lpszAddress = address.data();
  std::vector<MapiFileDesc> files(names.size());
  for (std::size_t index = 0; index < files.size(); ++index) {
    files[index].nPosition = index == 0 ? 3 : static_cast<ULONG>(-1);
    files[index].lpszPathName = names[index].data();
  }
  files[0].lpszFileName = shown.data();
  MapiMessage message{};
  message.lpszSubject = subject.data();
  message.lpszNoteText = text.data();
  message.flFlags = MAPI_RECEIPT_REQUESTED;
  message.nRecipCount = recipients.size();
  message.lpRecips = recipients.data();
  message.nFileCount = files.size();
  message.lpFiles = files.data();
  const ULONG number = mapi.send(session, 0, &message, 0, 0);
  Expect(number == SUCCESS_SUCCESS, "MAPISendMail: " + std::to_string(number));
}

void ExpectEnvelope(const MapiMessage& message, std::size_t files) {
  ExpectText(kSubject, message.lpszSubject, "subject");
  ExpectText("IPM.Note", message.lpszMessageType, "message type");
  Expect(message.lpszDateReceived != nullptr && std::strlen(message.lpszDateReceived) == 16 &&
             message.lpszDateReceived[4] == '/' && message.lpszDateReceived[13] == ':',
         "date received");
  Expect(message.flFlags == (MAPI_UNREAD | MAPI_RECEIPT_REQUESTED | MAPI_SENT), "flags");
  ExpectText("Ann Archer", message.lpOriginator->lpszName, "originator");
  ExpectText("SMTP:ann@desk.example", message.lpOriginator->lpszAddress, "originator's address");
  Expect(message.lpOriginator->ulRecipClass == MAPI_ORIG, "originator's class");
  Expect(message.nRecipCount == 2 && message.nFileCount == files, "counts");
  if (message.nRecipCount != 2) return;
  ExpectText("Bob Baker", message.lpRecips[0].lpszName, "first recipient");
  Expect(message.lpRecips[0].ulRecipClass == MAPI_TO, "first recipient's class");
  Expect(message.lpRecips[0].ulEIDSize != 0 && message.lpRecips[0].lpEntryID != nullptr,
         "first recipient's identifier");
  ExpectText("SMTP:stranger@outside.example", message.lpRecips[1].lpszAddress, "second recipient");
  Expect(message.lpRecips[1].ulRecipClass == MAPI_CC, "second recipient's class");
}

void ExpectFiles(const MapiMessage& message, const std::vector<std::string>& paths) {
  for (std::size_t index = 0; index < message.nFileCount && index < paths.size(); ++index) {
    const MapiFileDesc& file = message.lpFiles[index];
    ExpectText(index == 0 ? "shown.bin" : NameIn(paths[index]), file.lpszFileName, "file name");
    Expect(file.nPosition == (index == 0 ? 3 : static_cast<ULONG>(-1)), "position");
    Expect(BytesOf(file.lpszPathName) == BytesOf(paths[index].c_str()), "bytes of " + paths[index]);
    Expect(DeleteFileA(file.lpszPathName) != 0, "the temporary file is there");
  }
}

void ReadByMapi(const Mapi& mapi, LHANDLE session, const std::vector<std::string>& paths) {
  std::array<char, 512> id{};
  ULONG number = mapi.findNext(session, 0, nullptr, nullptr, MAPI_GUARANTEE_FIFO | MAPI_LONG_MSGID,
                               0, id.data());
  Expect(number == SUCCESS_SUCCESS, "MAPIFindNext: " + std::to_string(number));
  lpMapiMessage message = nullptr;
  number = mapi.read(session, 0, id.data(), MAPI_PEEK | MAPI_ENVELOPE_ONLY, 0, &message);
  Expect(number == SUCCESS_SUCCESS, "MAPIReadMail: " + std::to_string(number));
  if (message == nullptr) return;
  ExpectEnvelope(*message, paths.size());
  ExpectText("", message->lpszNoteText, "no text was asked for");
  Expect(mapi.free(message) == SUCCESS_SUCCESS, "MAPIFreeBuffer");
  number = mapi.read(session, 0, id.data(), 0, 0, &message);
  Expect(number == SUCCESS_SUCCESS, "MAPIReadMail again: " + std::to_string(number));
  ExpectEnvelope(*message, paths.size());
  ExpectText(kText, message->lpszNoteText, "text");
  ExpectFiles(*message, paths);
  mapi.free(message);
  std::array<char, 512> next{};
  number = mapi.findNext(session, 0, nullptr, nullptr, MAPI_UNREAD_ONLY, 0, next.data());
  Expect(number == MAPI_E_NO_MESSAGES, "it has been read");
  number = mapi.remove(session, 0, id.data(), 0, 0);
  Expect(number == SUCCESS_SUCCESS, "MAPIDeleteMail: " + std::to_string(number));
  number = mapi.findNext(session, 0, nullptr, nullptr, 0, 0, next.data());
  Expect(number == MAPI_E_NO_MESSAGES, "it is gone: " + std::to_string(number));
}

void ResolveByMapi(const Mapi& mapi, LHANDLE session) {
  std::string name = "carl";
  lpMapiRecipDesc found = nullptr;
  Expect(mapi.resolve(session, 0, name.data(), 0, 0, &found) == SUCCESS_SUCCESS, "resolved");
  ExpectText("Carl Example", found->lpszName, "name");
  ExpectText("SMTP:carl@elsewhere.example", found->lpszAddress, "address");
  Expect(mapi.free(found) == SUCCESS_SUCCESS, "MAPIFreeBuffer of a recipient");
}

void UseMapi(const std::vector<std::string>& paths) {
  const Mapi mapi;
  const LHANDLE ann = mapi.LogOn("ann");
  const LHANDLE bob = mapi.LogOn("bob");
  SendByMapi(mapi, ann, paths);
  ReadByMapi(mapi, bob, paths);
  ResolveByMapi(mapi, ann);
  Expect(mapi.logoff(ann, 0, 0, 0) == SUCCESS_SUCCESS, "MAPILogoff");
  Expect(mapi.logoff(bob, 0, 0, 0) == SUCCESS_SUCCESS, "MAPILogoff");
  Expect(mapi.logoff(bob, 0, 0, 0) == MAPI_E_INVALID_SESSION, "a session ends once");
}

void SendOnly(const std::vector<std::string>& paths) {
  const Mapi mapi;
  SendByMapi(mapi, mapi.LogOn("ann"), paths);
}

void ReadOnly(const std::vector<std::string>& paths) {
  const Mapi mapi;
  ReadByMapi(mapi, mapi.LogOn("bob"), paths);
}

// --- vbamap32.dll

// A record of Visual Basic's as its bytes. It owns the texts in it.
class VbRecord {
 public:
  VbRecord(BYTE* bytes, std::vector<std::size_t> texts) : bytes_(bytes), texts_(std::move(texts)) {}
  VbRecord(const VbRecord&) = delete;
  VbRecord& operator=(const VbRecord&) = delete;
  ~VbRecord() {
    for (const std::size_t at : texts_) Put(at, std::string_view());
  }

  void Put(std::size_t at, std::string_view text) const {
    BSTR old = nullptr;
    std::memcpy(&old, bytes_ + at, sizeof old);
    SysFreeString(old);
    BSTR fresh =
        text.empty() ? nullptr : SysAllocStringByteLen(text.data(), static_cast<UINT>(text.size()));
    std::memcpy(bytes_ + at, &fresh, sizeof fresh);
  }
  void Put(std::size_t at, LONG number) const { std::memcpy(bytes_ + at, &number, sizeof number); }
  LONG Number(std::size_t at) const {
    LONG number = 0;
    std::memcpy(&number, bytes_ + at, sizeof number);
    return number;
  }
  std::string Text(std::size_t at) const {
    BSTR text = nullptr;
    std::memcpy(&text, bytes_ + at, sizeof text);
    if (text == nullptr) return {};
    return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
  }

 private:
  BYTE* bytes_;
  std::vector<std::size_t> texts_;
};

constexpr std::size_t kMailSize = 36;
constexpr std::size_t kSmallSize = 24;  // of a recipient, and of a file

VbRecord MailIn(BYTE* bytes) {
  return {bytes, {4, 8, 12, 16, 20}};
}
VbRecord PartyIn(BYTE* bytes) {
  return {bytes, {8, 12, 20}};
}
VbRecord FileIn(BYTE* bytes) {
  return {bytes, {12, 16, 20}};
}

// An array of records as Visual Basic dimensions it: from 0, with one element at least.
class VbArray {
 public:
  explicit VbArray(std::size_t count) : count_(count == 0 ? 1 : count) {
    SafeArrayAllocDescriptor(1, &array_);
    array_->cbElements = kSmallSize;
    array_->rgsabound[0] = {static_cast<ULONG>(count_), 0};
    SafeArrayAllocData(array_);
    std::memset(array_->pvData, 0, kSmallSize * count_);
  }
  VbArray(const VbArray&) = delete;
  VbArray& operator=(const VbArray&) = delete;
  ~VbArray() {
    SafeArrayDestroyData(array_);
    SafeArrayDestroyDescriptor(array_);
  }
  SAFEARRAY** Place() { return &array_; }
  BYTE* At(std::size_t index) { return static_cast<BYTE*>(array_->pvData) + kSmallSize * index; }

 private:
  std::size_t count_;
  SAFEARRAY* array_ = nullptr;
};

struct VbMapi {
  template <class... Arguments>
  ULONG Call(const char* name, Arguments... arguments) const {
    using Function = ULONG(WINAPI*)(Arguments...);
    return Find<Function>(L"vbamap32.dll", name)(arguments...);
  }
  ULONG LogOn(const char* name) const {
    ULONG session = 0;
    const ULONG number = Call<ULONG, const char*, const char*, ULONG, ULONG, ULONG*>(
        "BMAPILogon", 0, name, "secret", MAPI_NEW_SESSION, 0, &session);
    Expect(number == SUCCESS_SUCCESS && session != 0, "BMAPILogon: " + std::to_string(number));
    return session;
  }
};

void SendByVba(const VbMapi& vba, ULONG session, const std::vector<std::string>& paths) {
  VbArray parties(2);
  VbArray files(paths.size());
  const VbRecord bob = PartyIn(parties.At(0));
  bob.Put(4, 1L);
  bob.Put(8, "Bob Baker");
  const VbRecord stranger = PartyIn(parties.At(1));
  stranger.Put(4, 2L);
  stranger.Put(8, "stranger");
  // A NUL ends the address, whatever the length says.
  stranger.Put(12, std::string_view("SMTP:stranger@outside.example\0", 30));
  std::vector<BYTE> space(kMailSize);
  const VbRecord mail = MailIn(space.data());
  mail.Put(4, kSubject);
  mail.Put(8, kText);
  mail.Put(24, 2L);
  mail.Put(28, 2L);
  mail.Put(32, static_cast<LONG>(paths.size()));
  for (std::size_t index = 0; index < paths.size(); ++index) {
    BYTE* const bytes = files.At(index);
    // The records stay when the view of them goes, so the texts are freed at the end.
    const VbRecord file(bytes, {});
    file.Put(8, index == 0 ? 3L : -1L);
    file.Put(12, paths[index]);
    if (index == 0) file.Put(16, "shown.bin");
  }
  const ULONG number = vba.Call<ULONG, ULONG, BYTE*, SAFEARRAY**, SAFEARRAY**, ULONG, ULONG>(
      "BMAPISendMail", session, 0, space.data(), parties.Place(), files.Place(), 0, 0);
  Expect(number == SUCCESS_SUCCESS, "BMAPISendMail: " + std::to_string(number));
  for (std::size_t index = 0; index < paths.size(); ++index) FileIn(files.At(index));
}

void ReadByVba(const VbMapi& vba, ULONG session, BSTR* id, const std::vector<std::string>& paths) {
  ULONG handle = 0;
  LONG partyCount = 0;
  LONG fileCount = 0;
  ULONG number = vba.Call<ULONG*, LONG*, LONG*, ULONG, ULONG, BSTR*, ULONG, ULONG>(
      "BMAPIReadMail", &handle, &partyCount, &fileCount, session, 0, id, 0, 0);
  Expect(number == SUCCESS_SUCCESS, "BMAPIReadMail: " + std::to_string(number));
  Expect(partyCount == 2 && fileCount == static_cast<LONG>(paths.size()), "counts");
  VbArray parties(static_cast<std::size_t>(partyCount));
  VbArray files(static_cast<std::size_t>(fileCount));
  std::vector<BYTE> space(kMailSize);
  std::vector<BYTE> sender(kSmallSize);
  const VbRecord mail = MailIn(space.data());
  const VbRecord originator = PartyIn(sender.data());
  number = vba.Call<ULONG, BYTE*, SAFEARRAY**, SAFEARRAY**, BYTE*>(
      "BMAPIGetReadMail", handle, space.data(), parties.Place(), files.Place(), sender.data());
  Expect(number == SUCCESS_SUCCESS, "BMAPIGetReadMail: " + std::to_string(number));
  Expect(mail.Text(4) == kSubject && mail.Text(8) == kText, "subject and text");
  Expect(mail.Text(12) == "IPM.Note" && mail.Text(16).size() == 16, "type and date");
  Expect(mail.Number(24) == 7 && mail.Number(28) == 2, "flags and count");
  Expect(mail.Number(32) == static_cast<LONG>(paths.size()), "count of files");
  Expect(originator.Text(8) == "Ann Archer" && originator.Number(4) == 0, "originator");
  const VbRecord bob = PartyIn(parties.At(0));
  Expect(bob.Number(4) == 1 && bob.Text(8) == "Bob Baker", "first recipient");
  Expect(bob.Number(16) == static_cast<LONG>(bob.Text(20).size()) && bob.Number(16) != 0,
         "first recipient's identifier");
  const VbRecord stranger = PartyIn(parties.At(1));
  Expect(stranger.Number(4) == 2 && stranger.Text(12) == "SMTP:stranger@outside.example",
         "second recipient: " + stranger.Text(12));
  for (std::size_t index = 0; index < paths.size(); ++index) {
    const VbRecord file = FileIn(files.At(index));
    Expect(file.Number(8) == (index == 0 ? 3 : -1), "position");
    Expect(file.Text(16) == (index == 0 ? "shown.bin" : NameIn(paths[index])), "file name");
    Expect(BytesOf(file.Text(12).c_str()) == BytesOf(paths[index].c_str()), "bytes");
    Expect(DeleteFileA(file.Text(12).c_str()) != 0, "the temporary file is there");
  }
}

void UseVba(const std::vector<std::string>& paths) {
  const VbMapi vba;
  const ULONG ann = vba.LogOn("ann");
  const ULONG bob = vba.LogOn("bob");
  SendByVba(vba, ann, paths);
  BSTR none = nullptr;
  BSTR id = SysAllocStringByteLen("old", 3);
  const auto findNext = [&](BSTR* seed) {
    return vba.Call<ULONG, ULONG, BSTR*, BSTR*, ULONG, ULONG, BSTR*>("BMAPIFindNext", bob, 0, &none,
                                                                     seed, 256, 0, &id);
  };
  Expect(findNext(&none) == SUCCESS_SUCCESS, "BMAPIFindNext");
  ReadByVba(vba, bob, &id, paths);
  std::vector<BYTE> space(kSmallSize);
  const VbRecord carl = PartyIn(space.data());
  Expect(vba.Call<ULONG, ULONG, const char*, ULONG, ULONG, BYTE*>(
             "BMAPIResolveName", ann, 0, "carl", 0, 0, space.data()) == SUCCESS_SUCCESS &&
             carl.Text(8) == "Carl Example" && carl.Text(12) == "SMTP:carl@elsewhere.example",
         "BMAPIResolveName");
  const char* const bytes = reinterpret_cast<const char*>(id);
  Expect(vba.Call<ULONG, ULONG, const char*, ULONG, ULONG>("BMAPIDeleteMail", bob, 0, bytes, 0,
                                                           0) == SUCCESS_SUCCESS,
         "BMAPIDeleteMail");
  Expect(findNext(&none) == MAPI_E_NO_MESSAGES, "it is gone");
  SysFreeString(id);
  // A session is mapi32's own.
  Expect(Mapi().logoff(ann, 0, 0, 0) == SUCCESS_SUCCESS, "MAPILogoff of a BMAPILogon");
  Expect(vba.Call<ULONG, ULONG, ULONG, ULONG>("BMAPILogoff", bob, 0, 0, 0) == SUCCESS_SUCCESS,
         "BMAPILogoff");
}

// --- single calls

// MapiMessage with UTF-16 texts: the same offsets as in ANSI.
struct WideMail {
  ULONG reserved;
  const wchar_t* texts[5];
  ULONG flags;
  const void* originator;
  ULONG recipientCount;
  const void* recipients;
  ULONG fileCount;
  const void* files;
};
struct WideParty {
  ULONG reserved;
  ULONG kind;
  const wchar_t* name;
  const wchar_t* address;
  ULONG idSize;
  const void* id;
};

void SendWide(const std::string& text) {
  const std::wstring subject(text.begin(), text.end());
  using Send = ULONG(WINAPI*)(LHANDLE, ULONG_PTR, const WideMail*, ULONG, ULONG);
  const WideParty parties[] = {{0, MAPI_TO, L"bob", nullptr, 0, nullptr},
                               {0, MAPI_BCC, L"\x0141ukasz", L"SMTP:l@out.example", 0, nullptr}};
  const WideMail mail{0, {subject.c_str(), L"\x4E2D\x6587"}, 0, nullptr, 2, parties, 0, nullptr};
  const Mapi mapi;
  const ULONG number =
      Find<Send>(L"mapi32.dll", "MAPISendMailW")(mapi.LogOn("ann"), 0, &mail, 0, 0);
  Expect(number == SUCCESS_SUCCESS, "MAPISendMailW: " + std::to_string(number));
}

void PrintNumber(const std::string& call) {
  const Mapi mapi;
  const LHANDLE session = 12345;  // of nobody
  std::array<char, 512> id{};
  std::string text = "00";
  lpMapiMessage message = nullptr;
  lpMapiRecipDesc recipient = nullptr;
  MapiMessage nothing{};
  ULONG number = 0;
  if (call == "MAPILogon") {
    LHANDLE none = 0;
    number = mapi.logon(0, text.data(), text.data(), MAPI_LOGON_UI, 0, &none);
  } else if (call == "MAPILogoff") {
    number = mapi.logoff(session, 0, 0, 0);
  } else if (call == "MAPISendMail") {
    number = mapi.send(session, 0, &nothing, 0, 0);
  } else if (call == "MAPIFindNext") {
    number = mapi.findNext(session, 0, nullptr, nullptr, 0, 0, id.data());
  } else if (call == "MAPIReadMail") {
    number = mapi.read(session, 0, text.data(), 0, 0, &message);
  } else if (call == "MAPISaveMail") {
    number = mapi.save(session, 0, &nothing, 0, 0, id.data());
  } else if (call == "MAPIDeleteMail") {
    number = mapi.remove(session, 0, text.data(), 0, 0);
  } else if (call == "MAPIResolveName") {
    number = mapi.resolve(session, 0, text.data(), 0, 0, &recipient);
  } else if (call == "MAPIDetails") {
    MapiRecipDesc nobody{};
    number = Find<LPMAPIDETAILS>(L"mapi32.dll", "MAPIDetails")(session, 0, &nobody, 0, 0);
  } else {
    Expect(false, "no such call: " + call);
  }
  std::printf("%lu\n", number);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  const std::string_view face = arguments[1];
  const std::vector<std::string> words(arguments + 2, arguments + count);
  if (face == "mapi") UseMapi(words);
  if (face == "send") SendOnly(words);
  if (face == "read") ReadOnly(words);
  if (face == "vba") UseVba(words);
  if (face == "wide") SendWide(words[0]);
  if (face == "number") PrintNumber(words[0]);
  return Failures() == 0 ? 0 : 1;
}
