// The back end of Internet mail: mail system 10 is both protocols, 6 POP3 alone, 7 SMTP alone.
//
// It copies the properties of a Server into the engine (smtppop), makes sure that the login data is
// there, runs one engine operation and reads the results back. Texts are UTF-8 outside and bytes
// inside; this is where they are converted.
//
// Failures of a protocol are returned by their number. Thrown as ServerError: 522 (cancelled login
// dialog), 521 (an attachment or alternative that is gone), 529 (CR, LF or NUL in an address, a
// name or a password), 530 (what Internet mail cannot do), 533 (no such header), 534 and 535
// (packing or encoding the files of a message failed), 540 (a call from inside another operation's
// wait), 544 (login data still missing).
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "internet/PopSession.h"
#include "internet/ProgressReporter.h"
#include "mail/AsynchNotifier.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "platform/CodePage.h"
#include "platform/FileSystem.h"
#include "platform/LocalClock.h"
#include "platform/LoginPrompt.h"
#include "platform/MessageBox.h"
#include "platform/Network.h"
#include "platform/ProgressDisplay.h"

namespace quillon {

class ProtocolLog;
class MessageCollector;
class smtppop;
struct OutgoingMessage;
struct PopSettings;
struct SmtpSettings;
struct SplitSettings;

struct InternetPorts {
  EventLoop& loop;
  Network& network;
  FileSystem& files;
  const CodePage& codePage;
  const LocalClock& clock;
  LoginPrompt& loginPrompt;
  MessageBoxPort& messageBox;
  clsINIUtilities& configuration;  // key "SMTPServer" of section "Internet"
  ProtocolLog& log;
  AsynchNotifier& notifier;
  ProgressDisplay& progress;
};

// What the header block says of the program that wrote it.
struct InternetProduct {
  std::string version;       // "X-Interface: Quillon OLE Server v" + version + " (32)"
  std::string specialBuild;  // "X-SpecialBuild: ", when not empty
};

class InternetBackEnd final : public BackEnd {
 public:
  InternetBackEnd(const InternetPorts& ports, InternetProduct product);
  ~InternetBackEnd() override;

  bool Supports(MailSystemId system, Operation operation) const override;

  std::int32_t Login(MailRequest& request) override;
  std::int32_t Logout(MailRequest& request) override;
  std::int32_t Send(MailRequest& request) override;
  std::int32_t LoadMessageHeaders(MailRequest& request) override;
  std::int32_t LoadMessageIdentifiers(MailRequest& request) override;
  std::int32_t LoadMessage(MailRequest& request) override;
  std::int32_t DeleteMessage(MailRequest& request) override;
  std::int32_t MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) override;
  std::int32_t UnreadCount(MailRequest& request, std::int32_t& count) override;
  std::int32_t ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                           std::string& resolved) override;
  void Shutdown(std::int32_t savedHandle) override;

  // What has been started for a client's object ends, without an event; else as Abort.
  void AsynchAbort() override;

  std::string ErrorText(MailSystemId system, std::int32_t number) const override;

  // Ends the running operation with 522. Callable from inside its wait.
  void Abort();

 private:
  class Call;
  struct Step;
  struct Process;
  enum class Adapter { Pop, Smtp };

  Process NewProcess(const MailRequest& request, std::int32_t operation);
  std::int32_t Perform(Call& call, Process process);
  std::int32_t Run(const Process& process, const Step& step);
  void BeginStep();
  void EndStep();
  void EndProcess(std::int32_t result, std::string text);
  // Remembers what failed, and shows it when error display is on.
  void Note(const Process& process, const Step& step, std::int32_t result);

  std::int32_t LoadHeaders(MailRequest& request, HeaderRequest wanted);
  std::string SmtpHost(const MailRequest& request) const;
  void PreparePop(MailRequest& request);
  void PrepareSmtp(MailRequest& request);
  bool AskForLogin(const MailRequest& request, const char* caption, LoginFields& fields);
  SmtpSettings SmtpSettingsOf(const MailRequest& request) const;
  PopSettings PopSettingsOf(const MailRequest& request) const;
  SplitSettings SplitSettingsOf(const MailRequest& request) const;
  OutgoingMessage MessageOf(const MailRequest& request) const;
  void StoreMessage(SharedState& shared, MessageCollector& collector) const;
  void RememberServer(const std::string& host);
  std::string TableText(MailSystemId system, std::int32_t number) const;
  smtppop& Engine();

  // Bytes of the wire as text, and text as bytes.
  std::string Text(const std::string& bytes) const { return ports_.codePage.ToText(bytes); }
  std::string Bytes(const std::string& text) const { return ports_.codePage.ToBytes(text); }
  HeaderTable TextTable(HeaderTable table) const;

  InternetPorts ports_;
  InternetProduct product_;
  ProgressReporter reporter_;
  std::unique_ptr<smtppop> engine_;   // made on first use
  std::shared_ptr<Process> process_;  // that goes on by itself
  std::int32_t lastNumber_ = 0;       // of the last failure, and what failed
  std::string lastContext_;
  std::string rememberedServer_;  // in the configuration file
  bool busy_ = false;
};

}  // namespace quillon
