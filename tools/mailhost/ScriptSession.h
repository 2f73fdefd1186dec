// Plays a conversation script to one client.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Connection.h"
#include "ContentReceiver.h"
#include "Conversation.h"
#include "Session.h"

namespace mailhost {

class ScriptSession : public Session {
 public:
  // Told in one line where the client left the script.
  using OnMismatch = std::function<void(const std::string&)>;

  // `conversation` must outlive the session. With `tls` it is played within TLS.
  ScriptSession(Connection& connection, const Conversation& conversation,
                std::unique_ptr<TlsSession> tls, BeginDelivery begin, OnMismatch onMismatch);

  void OnOpen() override;
  void OnSecured() override { Play(); }
  void OnLine(std::string_view line) override;
  void OnBadLine(std::string_view why) override { Mismatch(why); }
  bool ExpectsSecret() const override { return asksForSecret_; }
  bool WantsContent() const override { return content_.Active(); }
  std::size_t OnContent(std::string_view bytes) override;
  bool WantsInput() const override { return !failed_; }
  void OnClientGone() override;

 private:
  // Queues what comes next, up to the point where the client must speak.
  void Play();
  void Say(const ConversationStep& step);
  void NoteEnvelope(std::string_view line);
  void Mismatch(std::string_view found);

  Connection& connection_;
  const Conversation& conversation_;
  std::unique_ptr<TlsSession> tls_;  // until it begins
  const OnMismatch onMismatch_;
  std::size_t next_ = 0;
  bool failed_ = false;
  bool asksForSecret_ = false;
  Shape shape_;
  ContentReceiver content_;
  Envelope envelope_;
};

}  // namespace mailhost
