// An Internet back end on a fake network, with the records of one Server.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "internet/InternetBackEnd.h"
#include "internet/ProtocolLog.h"
#include "platform/Platform.h"
#include "support/FakeNetwork.h"
#include "support/FaultyFileSystem.h"
#include "support/ReversingProtector.h"
#include "support/TempFolder.h"
#include "support/TestSecurity.h"

namespace quillon::testing {

class FixedClock final : public LocalClock {
 public:
  LocalTime Now() const override { return now; }
  LocalTime now{2026, 11, 1, 0, 8, 5, 9, -210};
};

class AnsweringPrompt final : public LoginPrompt {
 public:
  Answer Ask(const LoginQuestion& question, LoginFields& fields) override {
    asked.push_back(question.caption);
    offered = fields;
    if (whileAsked) whileAsked();
    if (answer == Answer::Entered) fields = entered;
    return answer;
  }
  Answer answer = Answer::Unavailable;
  LoginFields entered;
  LoginFields offered;
  std::vector<std::string> asked;
  std::function<void()> whileAsked;
};

class RecordingBox final : public MessageBoxPort {
 public:
  void Show(const std::string& title, const std::string& text, Icon) override {
    shown.push_back(title + " | " + text);
  }
  std::vector<std::string> shown;
};

// What the user saw: the caption, then each status text and position, and the other lines as they
// stand.
class RecordingDisplay final : public ProgressDisplay {
 public:
  void Show(const std::string& caption, std::int16_t parts,
            std::function<void()> whenAborted) override {
    seen.push_back(caption + " " + std::to_string(parts));
    abort = std::move(whenAborted);
  }
  void SetLine(Line line, const std::string& text) override {
    if (line == Line::Status) seen.push_back(text);
    lines[line] = text;
  }
  void SetPosition(std::uint64_t done, std::uint64_t total) override {
    if (failure != nullptr) throw std::runtime_error(failure);
    seen.push_back(std::to_string(done) + "/" + std::to_string(total));
  }
  void Hide() override { seen.emplace_back("hidden"); }

  std::vector<std::string> seen;
  std::map<Line, std::string> lines;
  std::function<void()> abort;
  const char* failure = nullptr;  // what goes wrong
};

// The code of the ServerError that a call throws; 0 when it throws none.
inline std::int32_t CodeOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ServerError& error) {
    return error.Code();
  }
  return 0;
}

class InternetWorld {
 public:
  InternetWorld()
      : files(MakeFileSystem()),
        disk(*files),
        codePage(MakeAnsiCodePage()),
        characterSets(MakeCharacterSets()),
        characterEncoder(MakeCharacterEncoder()),
        configuration(*files, folder.Path("quillon.ini")),
        servers(configuration, nullptr, protector),
        log(*files, folder.Path()),
        security(network),
        fetched(disk, *security.crypto, userDirectory.Path()),
        backEnd(
            {network, network, security.Ports(), disk, *codePage, *characterSets, *characterEncoder,
             clock, prompt, box, configuration, servers, fetched, log, notifier, display},
            {"1.0", ""}),
        request{instance, shared} {
    instance.mailSystem = mail_system::kInternet;
    instance.smtpServer = "smtp.example";
    instance.postOffice = "pop.example";
    instance.loginName = "joe";
    instance.password = "secret";
    instance.attachmentDirectory = received.Path();
    shared.switches.temporaryDirectory = temporary.Path();
    shared.message.from = "Joe <joe@example.org>";
    shared.message.to = {"ann@example.org"};
    shared.message.subject = "Hello";
    shared.message.body = "A text.";
  }

  TempFolder folder;
  TempFolder received;   // the attachment directory
  TempFolder temporary;  // for the files of a message that is sent
  TempFolder userDirectory;
  FakeNetwork network;
  FixedClock clock;
  AnsweringPrompt prompt;
  RecordingBox box;
  std::unique_ptr<FileSystem> files;
  FaultyFileSystem disk;  // what the back end sees of them
  std::unique_ptr<CodePage> codePage;
  std::unique_ptr<CharacterSets> characterSets;
  std::unique_ptr<CharacterEncoder> characterEncoder;
  clsINIUtilities configuration;
  ReversingProtector protector;
  ServerSections servers;
  ProtocolLog log;
  AsynchNotifier notifier;
  RecordingDisplay display;
  TestSecurity security;
  FetchedIndex fetched;
  InternetBackEnd backEnd;
  SharedState shared;
  InstanceState instance;
  MailRequest request;
};

}  // namespace quillon::testing
