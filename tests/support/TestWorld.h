// A process of its own for one test: shared state, recording ports and as many Server objects as it
// likes.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "backends/activemsg/ActiveMessagingLibrary.h"
#include "backends/activemsg/ActiveMessagingMailSystem.h"
#include "backends/mapi/MapiMailSystem.h"
#include "backends/notes/NotesMailSystem.h"
#include "backends/vim/VimMailSystem.h"
#include "internet/ProtocolLog.h"
#include "mail/AsynchNotifier.h"
#include "mail/BackEnd.h"
#include "mail/BusyGate.h"
#include "mail/INIUtilities.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "ports/MailDialog.h"
#include "ports/MailSystemDialog.h"
#include "ports/MessageBox.h"
#include "ports/Workstation.h"
#include "server/Environment.h"
#include "server/MailSystems.h"
#include "server/Server.h"
#include "support/RecordingAutomation.h"
#include "support/TempFolder.h"

namespace quillon::testing {

class RecordingMessageBox final : public MessageBoxPort {
 public:
  void Show(const std::string& title, const std::string& text, Icon icon) override {
    shown.push_back(title + "|" + text);
    icons.push_back(icon);
  }

  std::vector<std::string> shown;
  std::vector<Icon> icons;
};

class AnsweringSystemDialog final : public MailSystemDialog {
 public:
  Answer Show(const std::string& caption, std::int32_t owner,
              const std::vector<MailSystemChoice>& choices,
              std::optional<std::size_t>& selected) override {
    asked = caption + "|" + std::to_string(owner) + "|" + choices.at(selected.value()).name;
    for (std::size_t i = 0; i < choices.size(); ++i) {
      if (choices[i].name == taken) selected = i;
    }
    return answer;
  }

  Answer answer = Answer::Unavailable;
  std::string taken;  // the name on the line that the user takes
  std::string asked;
};

class FakeWorkstation final : public Workstation {
 public:
  SystemVersion System() override { return system; }
  bool LibraryLoads(const std::string& name, const std::string& directory) override {
    ++probes;
    return libraries.contains(directory.empty() ? name : directory + "\\" + name);
  }
  std::optional<LibraryInfo> DescribeLibrary(const std::string& name) override {
    if (!libraries.contains(name)) return std::nullopt;
    return LibraryInfo{maker + name, "1.2.3.4"};
  }
  bool ObjectCreates(const std::string& progId) override { return objects.contains(progId); }
  std::string WindowsDirectory() override { return windows; }
  std::string SystemDirectory() override { return windows + "/system"; }
  std::string ProfileValue(const std::string& section, const std::string& key) override {
    return profile[section + "/" + key];
  }
  std::string UserRegistryText(const std::string& key, const std::string& value) override {
    const auto found = registry.find(key + "/" + value);
    return found != registry.end() ? found->second : "registry " + value;
  }
  std::string MachineRegistryText(const std::string& key, const std::string& value) override {
    return registry["machine/" + key + "/" + value];
  }
  std::string EnvironmentText(const std::string& name) override { return environment[name]; }

  SystemVersion system{SystemFamily::WindowsNt, "10.0.19045"};
  std::set<std::string> libraries;
  std::string maker = "Maker of ";
  std::map<std::string, double> objects;
  std::map<std::string, std::string> profile;
  std::map<std::string, std::string> registry;
  std::map<std::string, std::string> environment;
  std::string windows = "/nowhere";
  int probes = 0;
};

// A user at the send dialog: `use` does what he does in it.
class FakeMailDialog final : public MailDialog {
 public:
  bool Available() override { return use != nullptr; }
  bool Raise() override { return open > 0; }
  Answer Show(const std::string& shownCaption, std::int32_t shownOwner, const MailForm& form,
              MailDialogHost& host) override {
    ++open;
    caption = shownCaption;
    owner = shownOwner;
    const auto answer = use(form, host);
    --open;
    return answer;
  }

  std::function<Answer(const MailForm& form, MailDialogHost& host)> use;
  std::string caption;
  std::int32_t owner = 0;
  int open = 0;
};

// Makes the objects that the workstation has; they know their version and nothing else.
class WorkstationObjects final : public AutomationObjects {
 public:
  explicit WorkstationObjects(const FakeWorkstation& workstation) : workstation_(workstation) {}

  AutomationObjectPtr Create(const std::string& progId) override {
    const auto found = workstation_.objects.find(progId);
    if (found == workstation_.objects.end()) throw AutomationError(-2147221005, progId);
    auto object = std::make_shared<RecordingObject>(record_, progId);
    object->properties["version"] = found->second;
    return object;
  }

 private:
  const FakeWorkstation& workstation_;
  AutomationRecord record_;
};

// Answers each operation it has with `result`, and records what was asked.
class FakeBackEnd final : public BackEnd {
 public:
  MailResult Send(MailRequest&) override { return Answer("Send"); }
  MailResult Login(MailRequest&) override { return Answer("Login"); }
  MailResult LoadMessage(MailRequest&) override { return Answer("LoadMessage"); }
  MailResult DeleteMessage(MailRequest&) override { return Answer("DeleteMessage"); }
  MailResult UnreadCount(MailRequest&, std::int32_t& count) override {
    count = 7;
    return Answer("UnreadCount");
  }
  MailResult SetSessionHandle(MailRequest&, std::int32_t) override {
    return Answer("SetSessionHandle");
  }
  MailResult GetFolderList(MailRequest&, const std::string&, bool, bool,
                           std::vector<std::string>& folders) override {
    folders = {"Inbox", "Sent"};
    return Answer("GetFolderList");
  }
  void SetErrorDisplay(bool on) override { calls.emplace_back(on ? "display on" : "display off"); }
  void AsynchAbort() override { calls.emplace_back("AsynchAbort"); }
  void Shutdown(std::int32_t savedHandle) override {
    calls.push_back("Shutdown " + std::to_string(savedHandle));
    if (during) during();
  }

  MailResult result;
  std::function<void()> during;  // runs inside the call
  std::vector<std::string> calls;

 private:
  MailResult Answer(const char* call) {
    calls.emplace_back(call);
    if (during) during();
    return result;
  }
};

// A mail system that is always there.
class FakeMailSystem final : public MailSystem {
 public:
  FakeMailSystem(MailFamily family, BackEnd& backEnd) : MailSystem(family, &backEnd) {}
  bool IsPresent() override { return true; }
  bool KeepsHandle() const override { return false; }
  std::string ErrorText(MailSystemId, std::int32_t) const override { return {}; }
};

struct TestWorld {
  TestWorld() {
    mailSystems.Add(mapi);
    mailSystems.Add(vim);
    mailSystems.Add(activeMessaging);
    mailSystems.Add(notes);
  }

  std::unique_ptr<Server> NewServer() { return std::make_unique<Server>(environment); }

  TempFolder folder;
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  std::unique_ptr<CodePage> codePage = MakeAnsiCodePage();
  SharedState shared;
  RecordingMessageBox messageBox;
  FakeMailDialog mailDialog;
  AnsweringSystemDialog mailSystemDialog;
  FakeWorkstation workstation;
  MapiMailSystem mapi{workstation, *files};
  VimMailSystem vim{workstation};
  WorkstationObjects objects{workstation};
  ActiveMessagingLibrary activeMessagingLibrary{objects};
  ActiveMessagingMailSystem activeMessaging{activeMessagingLibrary};
  NotesMailSystem notes{workstation};
  MailSystems mailSystems;
  clsINIUtilities configuration{*files, folder.Path("quillon.ini")};
  ProtocolLog log{*files, folder.Path()};
  AsynchNotifier notifier;
  BusyGate busy;
  Environment environment{shared,
                          *files,
                          *codePage,
                          workstation,
                          messageBox,
                          mailDialog,
                          mailSystemDialog,
                          mailSystems,
                          configuration,
                          log,
                          notifier,
                          busy,
                          {"1.0", "1.0.0.0", "C:\\Program Files\\Quillon"}};
};

// What a failing member leaves with: the code, a blank and the text; empty when it does not fail.
template <typename Body>
std::string FailureOf(Body&& body) {
  try {
    body();
  } catch (const ServerError& error) {
    return std::to_string(error.Code()) + " " + error.Text();
  } catch (const ConversionError& error) {
    return error.what();
  }
  return {};
}

}  // namespace quillon::testing
