// The back end of Internet mail: mail system 10 is both protocols, 6 POP3 alone, 7 SMTP alone.
//
// It makes sure that the login data is there (LoginData), copies the properties of a Server for the
// engine (RequestRecords), has it run (EngineRunner) and reads the results back.
//
// Failures of a protocol are returned by their number. Thrown as ServerError: 522 (cancelled login
// dialog), 521 (an attachment or alternative that is gone), 529 (CR, LF or NUL in an address, a
// name or a password; a value of a section "Server NAME" that makes no sense; what a character set
// lacks, or the system of it), 530 (what Internet
// mail cannot do), 532 (the header of another mailbox), 533 (no such header), 534 and 535 (packing
// or encoding the files of a message failed), 540 (a call from inside another operation's wait),
// 544 (login data still missing).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "internet/EngineRunner.h"
#include "internet/FetchedIndex.h"
#include "internet/FetchedList.h"
#include "internet/LoginData.h"
#include "internet/PopSession.h"
#include "internet/ProtocolLog.h"
#include "internet/RequestRecords.h"
#include "internet/SectionMerge.h"
#include "internet/ServerSections.h"
#include "mail/AsynchNotifier.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/CharacterEncoder.h"
#include "ports/CharacterSets.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"
#include "ports/LoginPrompt.h"
#include "ports/MessageBox.h"
#include "ports/Network.h"
#include "ports/ProgressDisplay.h"

namespace quillon {

struct InternetPorts {
  EventLoop& loop;
  Network& network;
  SecurityPorts security;
  FileSystem& files;
  const CodePage& codePage;
  const CharacterSets& characterSets;
  const CharacterEncoder& characterEncoder;
  const LocalClock& clock;
  LoginPrompt& loginPrompt;
  MessageBoxPort& messageBox;
  clsINIUtilities& configuration;  // section "Internet"
  ServerSections& servers;
  FetchedIndex& fetched;
  ProtocolLog& log;
  AsynchNotifier& notifier;
  ProgressDisplay& progress;
};

class InternetBackEnd final : public BackEnd {
 public:
  InternetBackEnd(const InternetPorts& ports, InternetProduct product);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult Send(MailRequest& request) override;
  MailResult LoadMessageHeaders(MailRequest& request) override;
  MailResult LoadMessageIdentifiers(MailRequest& request) override;
  MailResult LoadMessage(MailRequest& request) override;
  MailResult DeleteMessage(MailRequest& request) override;
  MailResult MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) override;
  MailResult UnreadCount(MailRequest& request, std::int32_t& count) override;
  MailResult ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                         std::string& resolved) override;
  void Shutdown(std::int32_t savedHandle) override;

  // What has been started for a client's object ends, without an event; else the running operation
  // ends with 522. Callable from inside its wait.
  void AsynchAbort() override;

  // What the table of a protocol says to a number: for both protocols that of the one that is at
  // work.
  std::string ErrorText(MailSystemId system, std::int32_t number) const;

 private:
  class HeaderUpdate;
  struct Fetching;
  using Logins = std::vector<Task<SessionResult>>;

  WorkOrder NewOrder(const MailRequest& request, const char* member, std::int32_t operation,
                     const char* context);
  MailResult LoadHeaders(MailRequest& request, const char* member, std::int32_t operation,
                         HeaderRequest wanted);

  // The work of a call: the engine's, and what is done with its result. The call may have returned
  // by then, and its Server may be gone.
  static Task<SessionResult> LoginAll(Logins logins);
  void Report(SharedState& shared);
  void LogUnprotected(const InstanceState& instance);
  Task<SessionResult> Sent(Task<SessionResult> sending, std::string host);
  Task<SessionResult> Received(Task<SessionResult> receiving, std::string host);
  Task<SessionResult> HeadersLoaded(Task<SessionResult> loading,
                                    std::unique_ptr<HeaderUpdate> update, std::string mailbox);
  // What was fetched before from the mailbox; null when nobody asks for that.
  std::unique_ptr<FetchedList> FetchedBefore(const std::string& mailbox) const;
  // What is no longer in the mailbox is forgotten.
  void Forget(const std::string& mailbox, const FetchedList& fetched);
  std::uint64_t MostMessageBytes() const;
  // Of a message of the table: 532 is the server's own number.
  static Task<SessionResult> OfListed(Task<SessionResult> work);
  Task<SessionResult> MessageLoaded(Task<SessionResult> loading,
                                    std::unique_ptr<MessageCollector> collector,
                                    std::shared_ptr<Fetching> fetching);
  // Makes the message current, and notes that it was fetched.
  Task<> Deliver(MessageCollector& collector, const Fetching& fetching);

  // All parts as one; when one is gone, what `alone` loads.
  Task<SessionResult> PartsLoaded(PopSettings settings, std::vector<MessageKey> parts,
                                  std::unique_ptr<MessageCollector> collector,
                                  Task<SessionResult> alone, std::shared_ptr<Fetching> fetching);

  smtppop& Engine() { return runner_.Engine(); }
  // What script and configuration file say of the server.
  PopSettings Pop(const MailRequest& request);
  SmtpSettings Smtp(const MailRequest& request);
  HeaderReading Reading(bool rawHeaders) const {
    return {{ports_.codePage, ports_.characterSets}, rawHeaders};
  }
  // In the form that Smtp has found.
  OutgoingMessage Outgoing(const MailRequest& request) const;
  // Bytes of the wire as text, and text as bytes.
  std::string Text(const std::string& bytes) const { return ports_.codePage.ToText(bytes); }
  std::string Bytes(const std::string& text) const { return ports_.codePage.ToBytes(text); }

  InternetPorts ports_;
  InternetProduct product_;
  LoginData login_;
  EngineRunner runner_;
  MessageForm form_;             // of what leaves for the last SMTP server
  bool detailedErrors_ = false;  // as the configuration file says of the last server
  bool rawHeaders_ = false;      // as script or configuration file say of the last POP server
  bool expandTnef_ = false;      // the same
  bool trackUnread_ = false;     // the same
};

}  // namespace quillon
