// Simple MAPI: headers and sends of the registered server, beside a program that makes the same
// calls of mapi32.dll itself, which is this one. Behind both is the desk's store, where mapi.py has
// filled the Inbox of ann; bob sends to himself, and what he got is removed between two rounds.
#include <windows.h>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <mapi.h>
#include <objbase.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/Main.h"
#include "bench/support/Table.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"
#include "platform/win32/Variant.h"
#include "quillon_h.h"

namespace quillon::bench {
namespace {

constexpr std::size_t kHeaders = 5000;
constexpr int kHeaderRounds = 5;
constexpr int kSendsPerRound = 20;
constexpr int kSendRounds = 50;
constexpr int kPuts = 200;
constexpr LONG kSimpleMapi = 1;
constexpr LONG kMaximumHeaders = 10'000;
constexpr char kStore[] = "C:\\QuillonDesk";
constexpr char kPeer[] = "direct calls";
constexpr char kGoal[] = "<= 1.1";
constexpr char kPassword[] = "secret";
constexpr char kReader[] = "ann";
constexpr char kSender[] = "bob";
constexpr char kName[] = "Bob Baker";
constexpr char kAddress[] = "SMTP:bob@desk.example";
constexpr char kSubject[] = "A subject of ordinary length";

std::string Body() {
  std::string text;
  while (text.size() < 2048) text += "A line of ordinary text.\r\n";
  return text;
}

void Require(HRESULT result, const char* what) {
  if (FAILED(result)) throw std::runtime_error(std::string(what) + " fails");
}

void RequireMapi(ULONG number, const char* what) {
  if (number == SUCCESS_SUCCESS) return;
  throw std::runtime_error(std::string(what) + " ends with " + std::to_string(number));
}

// What is measured, from the logon to the logoff. A function that sends returns the seconds that
// the sends themselves have taken.
class Direct {
 public:
  std::size_t LoadHeaders() {
    const LHANDLE session = LogOn(kReader);
    std::size_t count = 0;
    std::array<char, 512> before{};
    std::array<char, 512> id{};
    while (findNext_(session, 0, nullptr, count == 0 ? nullptr : before.data(), MAPI_GUARANTEE_FIFO,
                     0, id.data()) == SUCCESS_SUCCESS) {
      lpMapiMessage envelope = nullptr;
      RequireMapi(read_(session, 0, id.data(), MAPI_ENVELOPE_ONLY | MAPI_PEEK, 0, &envelope),
                  "MAPIReadMail");
      free_(envelope);
      before = id;
      ++count;
    }
    RequireMapi(logoff_(session, 0, 0, 0), "MAPILogoff");
    return count;
  }

  double Send(int count) {
    const LHANDLE session = LogOn(kSender);
    MapiRecipDesc recipient{};
    recipient.ulRecipClass = MAPI_TO;
    recipient.lpszName = name_.data();
    recipient.lpszAddress = address_.data();
    MapiMessage message{};
    message.lpszSubject = subject_.data();
    message.lpszNoteText = body_.data();
    message.nRecipCount = 1;
    message.lpRecips = &recipient;
    double seconds = 0;
    for (int sent = 0; sent < count; ++sent) {
      ULONG number = SUCCESS_SUCCESS;
      seconds += Seconds([&] { number = send_(session, 0, &message, MAPI_LOGON_UI, 0); });
      RequireMapi(number, "MAPISendMail");
    }
    RequireMapi(logoff_(session, 0, 0, 0), "MAPILogoff");
    return seconds;
  }

 private:
  template <class Function>
  static Function Find(const char* name) {
    const auto found = reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"mapi32.dll"), name)));
    if (found == nullptr) throw std::runtime_error(std::string(name) + " is missing");
    return found;
  }

  LHANDLE LogOn(std::string profile) {
    LHANDLE session = 0;
    RequireMapi(logon_(0, profile.data(), password_.data(), 0, 0, &session), "MAPILogon");
    return session;
  }

  const LPMAPILOGON logon_ = Find<LPMAPILOGON>("MAPILogon");
  const LPMAPILOGOFF logoff_ = Find<LPMAPILOGOFF>("MAPILogoff");
  const LPMAPIFINDNEXT findNext_ = Find<LPMAPIFINDNEXT>("MAPIFindNext");
  const LPMAPIREADMAIL read_ = Find<LPMAPIREADMAIL>("MAPIReadMail");
  const LPMAPIFREEBUFFER free_ = Find<LPMAPIFREEBUFFER>("MAPIFreeBuffer");
  const LPMAPISENDMAIL send_ = Find<LPMAPISENDMAIL>("MAPISendMail");
  std::string password_ = kPassword;
  std::string name_ = kName;
  std::string address_ = kAddress;
  std::string subject_ = kSubject;
  std::string body_ = Body();
};

Variant Text(std::string_view text) {
  Variant variant;
  V_BSTR(&variant.Get()) = Bstr(text).Detach();
  V_VT(&variant.Get()) = VT_BSTR;
  return variant;
}

Variant Number(LONG number) {
  Variant variant;
  V_I4(&variant.Get()) = number;
  V_VT(&variant.Get()) = VT_I4;
  return variant;
}

// The same, as a compiled client of the server does it.
class Served {
 public:
  Served() {
    CLSID id = {};
    Require(CLSIDFromProgID(L"QuillonInterface.Server", &id), "CLSIDFromProgID");
    Require(
        CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IServer), server_.PutVoid()),
        "CoCreateInstance");
    Require(server_->put_mailSystem(Number(kSimpleMapi).Get()), "mailSystem");
    Require(server_->put_Password(Text(kPassword).Get()), "Password");
    Require(server_->put_MaximumHeaders(Number(kMaximumHeaders).Get()), "MaximumHeaders");
  }

  std::size_t LoadHeaders() {
    LogIn(kReader);
    Require(server_->LoadMessageHeaders(), "LoadMessageHeaders");
    Require(server_->Logout(), "Logout");
    Variant count;
    Require(server_->get_messageCount(count.Put()), "messageCount");
    return static_cast<std::size_t>(V_I4(&count.Get()));
  }

  double Send(int count) {
    LogIn(kSender);
    double seconds = 0;
    for (int sent = 0; sent < count; ++sent) {
      Require(server_->NewMessage(), "NewMessage");
      Require(server_->AddRecipientTo(recipient_.Get()), "AddRecipientTo");
      Require(server_->put_subject(subject_.Get()), "subject");
      Require(server_->put_Message(body_.Get()), "Message");
      HRESULT result = S_OK;
      seconds += Seconds([&] { result = server_->Send(); });
      Require(result, "Send");
    }
    Require(server_->Logout(), "Logout");
    return seconds;
  }

  // The least that a call of the server can be: the way to it and back.
  void Put() { Require(server_->put_subject(subject_.Get()), "subject"); }

 private:
  void LogIn(const char* name) {
    Require(server_->put_loginName(Text(name).Get()), "loginName");
    Require(server_->Login(), "Login");
  }

  ComPtr<IServer> server_;
  Bstr recipient_{std::string(kName) + " <" + kAddress + ">"};
  Variant subject_ = Text(kSubject);
  Variant body_ = Text(Body());
};

// Empties bob's folders.
void RemoveSent() {
  namespace fs = std::filesystem;
  std::vector<fs::path> folders;
  const auto mailbox = fs::path(kStore) / "mailboxes" / kSender;
  for (const auto& entry : fs::recursive_directory_iterator(mailbox)) {
    if (entry.path().filename() == "messages") folders.push_back(entry.path());
  }
  for (const auto& folder : folders) {
    fs::remove_all(folder);
    fs::create_directory(folder);
  }
}

// The calls that the desk has noted for some work, without the numbers of their sessions.
template <class Work>
std::vector<std::string> CallsOf(Work work) {
  constexpr std::string_view kSession = "session=";
  const auto log = std::filesystem::path(kStore) / "calls.txt";
  std::filesystem::remove(log);
  work();
  std::vector<std::string> calls;
  std::ifstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    const auto session = line.find(kSession);
    if (session != std::string::npos) {
      line.erase(session, line.find(' ', session) - session);
    }
    calls.push_back(line);
  }
  return calls;
}

void CompareCalls(const std::string& what, const std::vector<std::string>& served,
                  const std::vector<std::string>& direct) {
  if (served.empty() || served != direct) throw std::runtime_error(what + ": the calls differ");
  std::map<std::string, int> counts;
  for (const auto& call : served) ++counts[call.substr(0, call.find(' '))];
  std::string text;
  for (const auto& [name, count] : counts) text += " " + name + " " + std::to_string(count);
  PrintNote(what + ": both sides call" + text);
}

template <class Mail>
Side Headers(Mail& mail) {
  return [&mail] {
    std::size_t count = 0;
    const double seconds = Seconds([&] { count = mail.LoadHeaders(); });
    if (count != kHeaders) throw std::runtime_error(std::to_string(count) + " headers");
    return seconds * 1e6 / kHeaders;
  };
}

template <class Mail>
Side Sends(Mail& mail) {
  return [&mail] {
    RemoveSent();
    return mail.Send(kSendsPerRound) * 1e6 / kSendsPerRound;
  };
}

template <class Mail>
Side SendsWhole(Mail& mail) {
  return [&mail] {
    RemoveSent();
    return Seconds([&] { mail.Send(kSendsPerRound); }) * 1e6 / kSendsPerRound;
  };
}

int Run() {
  Served served;
  Direct direct;
  CompareCalls("LoadMessageHeaders", CallsOf([&] { served.LoadHeaders(); }),
               CallsOf([&] { direct.LoadHeaders(); }));
  CompareCalls("Send", CallsOf([&] { served.Send(kSendsPerRound); }),
               CallsOf([&] { direct.Send(kSendsPerRound); }));
  PrintRow("LoadMessageHeaders of 5,000, per header", kPeer,
           Compare(kHeaderRounds, Headers(served), Headers(direct)), " us", kGoal);
  PrintRow("Send", kPeer, Compare(kSendRounds, Sends(served), Sends(direct)), " us", kGoal);
  PrintRow("Send, the message put anew each time", kPeer,
           Compare(kSendRounds, SendsWhole(served), SendsWhole(direct)), " us", kGoal);
  std::vector<double> puts;
  while (puts.size() < kPuts) puts.push_back(Seconds([&] { served.Put(); }) * 1e6);
  PrintRow("a property put alone", FigureText(SpreadOf(puts).median) + " us");
  return 0;
}

}  // namespace
}  // namespace quillon::bench

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int status = quillon::bench::Main("bench_mapi", quillon::bench::Run);
  CoUninitialize();
  return status;
}
