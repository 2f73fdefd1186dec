// Servers for the fake network.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ConversationFile.h"
#include "support/FakeNetwork.h"

namespace quillon::testing {

enum class Shape { Whole, Line, Byte };

// Where a played conversation is cut off: after that many steps of the server's side, `halfway` in
// the middle of what the last of them says.
struct Cut {
  std::size_t steps = static_cast<std::size_t>(-1);
  bool halfway = false;
};

// Cuts what the client writes into lines.
class LinePeer : public FakePeer {
 public:
  void OnBytes(std::string_view bytes) final;

 protected:
  virtual void OnLine(std::string_view line) = 0;

 private:
  std::string partial_;
};

// Plays the server's side of a conversation.
class ScriptedPeer final : public LinePeer {
 public:
  ScriptedPeer(const Conversation& conversation, Shape shape, Cut cut);

  void OnConnected() override { Play(); }
  void OnClientClosed() override { clientGone = true; }

  // What the client said that it should not have, and steps that are left over; empty when all went
  // as written.
  std::vector<std::string> Complaints() const;
  // The lines of the message after DATA, each with LF, without the last ".".
  std::string data;
  bool clientGone = false;
  // Whether lines behind the last step belong to a message whose end never comes.
  bool hearsAnything = false;
  // What the server of the conversation never heard of is refused, and not a part of it.
  bool isOld = false;
  // How the connection is secured where the conversation says so.
  std::function<std::unique_ptr<PeerFilter>()> secure;

 private:
  void OnLine(std::string_view line) override;
  void Play();
  void Utter(std::string_view text);

  std::string name_;
  std::vector<ConversationStep> steps_;
  std::size_t next_ = 0;
  Shape shape_;
  Cut cut_;
  std::string whole_;  // said since the client spoke, for Shape::Whole
  std::vector<std::string> complaints_;
};

// An obliging server of either protocol, with one message in its mailbox.
class ObligingPeer final : public LinePeer {
 public:
  explicit ObligingPeer(bool isPop) : isPop_(isPop) {}
  void OnConnected() override { Say(isPop_ ? "+OK ready\r\n" : "220 ready\r\n"); }

 private:
  void OnLine(std::string_view line) override;

  bool isPop_;
  bool inData_ = false;
};

// A POP3 server whose sessions share a mailbox, from which others may take messages.
class MailboxPeer final : public LinePeer {
 public:
  enum class Trouble { None, Refuses, HangsUp, FallsSilent };
  struct Message {
    std::string identifier;
    std::string text;  // with its header
  };
  struct Mailbox {
    std::vector<Message> messages;
    bool knowsIdentifiers = true;
    bool refusesToQuit = false;
    Trouble trouble = Trouble::None;
    std::string troubleAt;  // a command's begin
  };

  explicit MailboxPeer(std::shared_ptr<Mailbox> mailbox) : mailbox_(std::move(mailbox)) {}
  void OnConnected() override {
    listed_ = mailbox_->messages;
    Say("+OK ready\r\n");
  }

 private:
  void OnLine(std::string_view line) override;
  std::string Answer(std::string_view command, std::size_t number);
  std::string ListIdentifiers() const;
  void Leave();

  std::shared_ptr<Mailbox> mailbox_;
  std::vector<Message> listed_;  // when the session began
  std::set<std::size_t> deleted_;
};

// Takes everything and says nothing.
class MutePeer final : public FakePeer {
  void OnBytes(std::string_view) override {}
};

}  // namespace quillon::testing
