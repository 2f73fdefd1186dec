// Several clients at once, on a real loop and against real servers: while a call of one waits, the
// loop serves calls of the others, as it does when they arrive over COM. Whatever meets whatever,
// nothing may crash or wait for ever, and a success must be true.
//
// The calls are chosen by a generator whose seed is printed. QUILLON_CROWD_SEED repeats the
// choices, if not what the servers make of them; QUILLON_CROWD_SECONDS says how long it goes on.
#include <array>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "internet/InternetBackEnd.h"
#include "internet/InternetMailSystem.h"
#include "platform/Platform.h"
#include "ports/LocalClock.h"
#include "ports/LoginPrompt.h"
#include "ports/Network.h"
#include "ports/ProgressDisplay.h"
#include "support/LoopbackMailServer.h"
#include "support/ReversingProtector.h"
#include "support/TestSecurity.h"
#include "support/TestWorld.h"

#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned kSeconds = 60;
#else
constexpr unsigned kSeconds = 5;
#endif

namespace quillon::testing {
namespace {

constexpr unsigned kMails = 4;           // in the mailbox
constexpr std::size_t kMostServers = 4;  // objects at once
constexpr int kMostNested = 5;           // calls, one inside the other
constexpr TickCount kPatience = 30000;   // until everything has come to rest
constexpr unsigned kCallsBetweenRests = 300;
constexpr unsigned kRepliesToHangUp = 60;

unsigned NumberFrom(const char* variable, unsigned otherwise) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? otherwise : static_cast<unsigned>(std::stoul(text));
}

std::string TextOfMail(unsigned number) {
  return "mail " + std::to_string(number) + "\r\n.dots\r\n" + std::string(number * 3000, 'm') +
         "\r\n";
}

std::vector<std::string> Mailbox() {
  std::vector<std::string> mails;
  for (unsigned number = 1; number <= kMails; ++number) {
    mails.push_back("From: ann@example.org\r\nSubject: mail " + std::to_string(number) +
                    "\r\n\r\n" + TextOfMail(number));
  }
  return mails;
}

// What the client knows of a message that it has sent.
struct Sending {
  enum class Outcome { Refused, Unknown, Success } outcome = Outcome::Unknown;
  const char* how = "call";  // returned, or an event, said so
};

class Crowd {
 public:
  explicit Crowd(unsigned seed);

  void Run(std::chrono::seconds duration);
  void CheckWhatArrived();
  void Print() const;

 private:
  using Client = std::shared_ptr<Server>;

  class Listener final : public NotificationObject {
   public:
    explicit Listener(Crowd& crowd) : crowd_(crowd) {}
    bool AsynchNotification(const AsynchEvent& event) override {
      crowd_.Hear(event);
      return true;
    }

   private:
    Crowd& crowd_;
  };

  unsigned Pick(unsigned below) { return static_cast<unsigned>(random_() % below); }
  Client Somebody();
  void Prepare(Server& server);
  // One call of one client; others may come inside it.
  void Call();
  std::int32_t Try(const char* member, const std::function<void()>& call);
  void Hear(const AsynchEvent& event);
  void Send(Server& server);
  void LoadHeaders(Server& server);
  void Load(Server& server);
  void Resolve(Server& server);
  void Other(Server& server);
  void ComeAndGo();
  // Nobody calls any more until what is running has ended; then everything works.
  void Rest();

  std::mt19937 random_;
  std::unique_ptr<NetworkLoop> loop_ = MakeNetworkLoop();
  LoopbackMailServer host_{Mailbox()};
  TempFolder temporary_;
  TestWorld world_;
  std::unique_ptr<LocalClock> clock_ = MakeLocalClock();
  std::unique_ptr<CharacterSets> characterSets_ = MakeCharacterSets();
  NoLoginPrompt prompt_;
  NoProgressDisplay display_;
  TestSecurity security_{*loop_};
  ReversingProtector protector_;
  ServerSections servers_{world_.configuration, nullptr, protector_};
  std::unique_ptr<CharacterEncoder> characterEncoder_ = MakeCharacterEncoder();
  TempFolder userDirectory_;
  FetchedIndex fetched_{*world_.files, *security_.crypto, userDirectory_.Path()};
  InternetBackEnd backEnd_{
      {*loop_, *loop_, security_.Ports(), *world_.files, *world_.codePage, *characterSets_,
       *characterEncoder_, *clock_, prompt_, world_.messageBox, world_.configuration, servers_,
       fetched_, world_.log, world_.notifier, display_},
      {"1.0", {}}};
  InternetMailSystem internet_{backEnd_};
  std::vector<Client> clients_;
  bool resting_ = false;
  int nested_ = 0;
  // Calls that change the message or the headers, which all share: what a call has loaded is there
  // when it comes back, unless another one came in between.
  unsigned changes_ = 0;
  Timer others_;
  std::vector<Sending> sendings_;
  std::optional<std::size_t> goingOn_;  // the sending that the registered object will hear of
  std::map<std::string, std::map<std::int32_t, unsigned>> results_;  // of each member, by code
};

Crowd::Crowd(unsigned seed)
    : random_(seed), others_(*loop_, [this] {
        if (resting_) return;
        others_.Start(Pick(4));
        if (nested_ < kMostNested) Call();
      }) {
  world_.mailSystems.Add(internet_);
  world_.shared.switches.temporaryDirectory = temporary_.Path();
  WriteWholeFile(*world_.files, world_.folder.Path("file"), BytesOf(std::string(300'000, 'f')));
}

Crowd::Client Crowd::Somebody() {
  if (clients_.empty()) clients_.push_back(world_.NewServer());
  return clients_[Pick(static_cast<unsigned>(clients_.size()))];
}

// Others have changed what all share.
void Crowd::Prepare(Server& server) {
  const auto put = [&](Property property, const Value& value) { server.Put(property, value); };
  put(Property::mailSystem, std::int16_t{mail_system::kInternet});
  put(Property::LoginDialog, std::int16_t{0});
  put(Property::SMTPServer, std::string("127.0.0.1"));
  put(Property::postOffice, std::string("127.0.0.1"));
  put(Property::loginName, std::string("joe"));
  put(Property::Password, std::string("secret"));
  put(Property::from, std::string("ann@example.org"));
  put(Property::SMTPPort, std::int32_t{host_.SmtpPort()});
  put(Property::POPPort, std::int32_t{host_.PopPort()});
}

std::int32_t Crowd::Try(const char* member, const std::function<void()>& call) {
  std::int32_t code = 0;
  try {
    call();
  } catch (const ServerError& error) {
    code = error.Code();
  }
  ++results_[member][code];
  return code;
}

void Crowd::Call() {
  ++nested_;
  const auto client = Somebody();
  Server& server = *client;
  const auto kind = Pick(24);
  if (Pick(8) != 0) Prepare(server);
  if (kind < 5) {
    Send(server);
  } else if (kind < 7) {
    LoadHeaders(server);
  } else if (kind < 10) {
    Load(server);
  } else if (kind < 11) {
    Resolve(server);
  } else if (kind < 13) {
    Try("AsynchAbort", [&] { server.AsynchAbort(); });
  } else if (kind < 15) {
    Try("AsynchObjectRegister", [&] {
      server.AsynchObjectRegister(std::make_shared<Listener>(*this), 0,
                                  static_cast<std::int32_t>(Pick(2)));
    });
  } else if (kind < 16) {
    ComeAndGo();
  } else {
    Other(server);
  }
  --nested_;
}

void Crowd::Hear(const AsynchEvent& event) {
  if (event.kind == asynch_kind::kEndOfProcess && event.operation == asynch_operation::kSend &&
      event.result == kBackEndSuccess) {
    EXPECT_TRUE(goingOn_.has_value()) << "an end that nobody waits for";
    if (goingOn_) sendings_[*goingOn_] = {Sending::Outcome::Success, "event"};
    goingOn_.reset();
  }
  if (!resting_ && nested_ < kMostNested && Pick(6) == 0) Call();
}

std::string TextOf(std::size_t sending) {
  const auto name = "text " + std::to_string(sending) + ";";
  std::string text;
  const std::size_t lines = sending % 40 == 0 ? 4000 : sending % 5 + 1;
  for (std::size_t line = 0; line < lines; ++line) text += name + std::to_string(line) + "\r\n";
  return text;
}

void Crowd::Send(Server& server) {
  const auto sending = sendings_.size();
  sendings_.emplace_back();
  ++changes_;
  server.NewMessage();
  server.AddRecipientTo("bob@example.org");
  server.Put(Property::from, Value(std::string("ann@example.org")));
  server.Put(Property::subject, Value("sending " + std::to_string(sending)));
  server.Put(Property::Message, Value(TextOf(sending)));
  if (Pick(8) == 0) server.AddAttachment(world_.folder.Path("file"));
  const bool registered = world_.notifier.Registered();
  const auto before = goingOn_;
  if (registered) goingOn_ = sending;
  const auto code = Try("Send", [&] { server.Send(); });
  // What is no number of the engine's has kept the call from it, but for the abort and the disk.
  if (code != 0 && code < 600 && code != 522 && code != 534 && code != 535) {
    sendings_[sending].outcome = Sending::Outcome::Refused;
    if (registered) goingOn_ = before;
  }
  if (code == 0 && !registered) sendings_[sending].outcome = Sending::Outcome::Success;
}

void Crowd::LoadHeaders(Server& server) {
  const bool identifiers = Pick(3) == 0;
  const auto change = ++changes_;
  const bool registered = world_.notifier.Registered();
  const auto code = identifiers
                        ? Try("LoadMessageIdentifiers", [&] { server.LoadMessageIdentifiers(); })
                        : Try("LoadMessageHeaders", [&] { server.LoadMessageHeaders(); });
  if (code != 0 || registered || changes_ != change) return;
  const auto& headers = world_.shared.headers;
  EXPECT_LE(headers.size(), kMails);
  for (std::size_t i = 0; i < headers.size() && !identifiers; ++i) {
    const HeaderRecord header = headers.at(i);
    EXPECT_EQ(header.subject, "mail " + header.number);
  }
}

void Crowd::Load(Server& server) {
  if (world_.shared.headers.empty()) return LoadHeaders(server);
  const auto index = Pick(static_cast<unsigned>(world_.shared.headers.size()));
  const HeaderRecord header = world_.shared.headers.at(index);
  server.Put(Property::messageIndex, Value(static_cast<std::int32_t>(index)));
  const auto change = ++changes_;
  const bool registered = world_.notifier.Registered();
  if (Pick(4) == 0) {
    Try("DeleteMessage", [&] { server.DeleteMessage(); });
  } else if (Try("LoadMessage", [&] { server.LoadMessage(); }) == 0 && !registered &&
             changes_ == change) {
    EXPECT_EQ(world_.shared.message.body,
              TextOfMail(static_cast<unsigned>(std::stoul(header.number))));
  }
}

void Crowd::Resolve(Server& server) {
  const auto name = "name" + std::to_string(Pick(1000));
  std::string resolved;
  if (Try("ResolveName", [&] { resolved = server.ResolveName(name); }) == 0) {
    EXPECT_NE(resolved.find(name), std::string::npos) << resolved;
  }
}

void Crowd::Other(Server& server) {
  switch (Pick(9)) {
    case 0:
      Try("Login", [&] { server.Login(); });
      break;
    case 1:
      Try("Logout", [&] { server.Logout(); });
      break;
    case 2:
      Try("UnreadCount", [&] { server.Get(Property::UnreadCount); });
      break;
    case 3: {
      constexpr std::array<std::int16_t, 6> kSystems{0, 1, 6, 7, 9, 10};
      server.Put(Property::mailSystem, Value(kSystems[Pick(kSystems.size())]));
      break;
    }
    case 4:
      Try("AsynchObjectUnregister", [&] { server.AsynchObjectUnregister(0); });
      break;
    case 5:
      ++changes_;
      server.NewMessage();
      break;
    case 6:
      server.GetMessageItems(1);
      Try("GetHeaderItemString", [&] { server.GetHeaderItemString(4); });
      break;
    case 7:
      server.ClearMessageItems(6);
      server.Get(Property::messageCount);
      break;
    default:
      loop_->Post([this] {
        if (!resting_ && nested_ < kMostNested) Call();
      });
  }
}

void Crowd::ComeAndGo() {
  if (clients_.size() < kMostServers && Pick(2) == 0) {
    clients_.push_back(world_.NewServer());
    return;
  }
  // Now and then all of them, and the process is as new again.
  auto leaving = std::move(clients_);
  clients_.clear();
  if (Pick(3) != 0) {
    clients_.assign(leaving.begin() + 1, leaving.end());
    leaving.resize(1);
  }
}

void Crowd::Rest() {
  resting_ = true;
  host_.HangUpOnceIn(0);
  clients_.push_back(world_.NewServer());  // nothing is registered any more
  goingOn_.reset();
  Server& server = *clients_.back();
  Prepare(server);
  const auto deadline = loop_->Now() + kPatience;
  const auto busy = [&] {
    return FailureOf([&] { server.Logout(); }).starts_with("540") && loop_->Now() < deadline;
  };
  while (busy()) loop_->RunUntil([] { return false; }, loop_->Now() + 5);
  const auto sending = sendings_.size();
  Send(server);
  EXPECT_EQ(sendings_[sending].outcome, Sending::Outcome::Success) << "nothing works any more";
  EXPECT_EQ(FailureOf([&] { server.LoadMessageHeaders(); }), "");
  EXPECT_EQ(world_.shared.headers.size(), kMails);
  EXPECT_TRUE(temporary_.Names().empty());
  clients_.pop_back();
  host_.HangUpOnceIn(kRepliesToHangUp);
  resting_ = false;
  others_.Start(0);
}

void Crowd::Run(std::chrono::seconds duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  for (unsigned calls = 0; std::chrono::steady_clock::now() < end; ++calls) {
    if (calls % kCallsBetweenRests == 0) Rest();
    if (::testing::Test::HasFailure()) return;
    Call();
    loop_->RunUntil([] { return false; }, loop_->Now() + Pick(3));
  }
  Rest();
  resting_ = true;
  clients_.clear();
}

void Crowd::CheckWhatArrived() {
  std::map<std::size_t, unsigned> arrived;
  for (const auto& message : host_.Received()) {
    const auto at = message.find("Subject: sending ");
    ASSERT_NE(at, std::string::npos);
    const auto sending = std::stoul(message.substr(at + 17));
    ++arrived[sending];
    EXPECT_NE(message.find("\r\n" + TextOf(sending)), std::string::npos) << sending;
  }
  for (std::size_t i = 0; i < sendings_.size(); ++i) {
    const auto outcome = sendings_[i].outcome;
    EXPECT_LE(arrived[i], outcome == Sending::Outcome::Refused ? 0U : 1U)
        << "sending " << i << ", by " << sendings_[i].how;
    EXPECT_GE(arrived[i], outcome == Sending::Outcome::Success ? 1U : 0U)
        << "sending " << i << ", by " << sendings_[i].how;
  }
}

void Crowd::Print() const {
  for (const auto& [member, codes] : results_) {
    std::cout << member << ":";
    for (const auto& [code, count] : codes) std::cout << " " << code << " x " << count;
    std::cout << "\n";
  }
  std::cout << sendings_.size() << " messages, " << host_.Received().size() << " arrived\n";
}

TEST(CrowdTest, CallsThatMeetDoNotHarmEachOther) {
  const unsigned seed = NumberFrom("QUILLON_CROWD_SEED", std::random_device()());
  std::cout << "seed " << seed << std::endl;
  Crowd crowd(seed);
  crowd.Run(std::chrono::seconds(NumberFrom("QUILLON_CROWD_SECONDS", kSeconds)));
  crowd.CheckWhatArrived();
  crowd.Print();
}

}  // namespace
}  // namespace quillon::testing
