// A byte stream secured by TLS over another byte stream; to the layers above it is one like any
// other.
//
// Begin makes the handshake, after which the owner judges the peer's certificate and calls Accept.
// Until then not a byte of text passes in either direction. The session sees whole records only.
// What has been encrypted is never encrypted again, so nothing more is taken before it has left.
// The events of the stream below do not tell of text that has been decrypted and not been read; for
// that an event is posted.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "ports/ByteQueue.h"
#include "ports/Network.h"
#include "ports/Tls.h"

namespace quillon {

class SecuredStream final : public ByteStream, private ByteStream::Handler {
 public:
  // IoResult::error when it is TLS that failed, not the connection; Reason has the words.
  static constexpr int kTlsError = -1;

  // `plain` is connected; nothing has been read from it that belongs to the handshake.
  SecuredStream(EventLoop& loop, std::unique_ptr<ByteStream> plain,
                std::unique_ptr<TlsSession> session);
  // Tells the peer the end, as far as the system takes it now.
  ~SecuredStream() override;

  // Called once, from the loop, behind the handshake; false when it failed, with a Reason.
  // Destroying the stream gives the handshake up. It has no time limit of its own.
  using Ready = std::function<void(bool secured)>;
  void Begin(Ready ready);
  // Behind a handshake that succeeded: lets text pass.
  void Accept();

  const TlsFacts& Facts() const noexcept { return facts_; }
  TlsSession& Session() noexcept { return *session_; }
  // Why the handshake or the stream has failed, as the end of a sentence.
  const std::string& Reason() const noexcept { return reason_; }
  // Whether the end that Read has told came without the peer's word, so that something may have
  // been cut off.
  bool Truncated() const noexcept { return truncated_; }

  // Tells the peer the end, as far as the system takes it now.
  void Shutdown();

  void SetHandler(ByteStream::Handler& handler) override { handler_ = &handler; }
  IoResult Read(std::span<char> buffer) override;
  IoResult Write(std::string_view bytes) override;
  void WantRead(bool want) override;
  std::string LocalAddress() const override { return plain_->LocalAddress(); }
  bool IsIPv6() const override { return plain_->IsIPv6(); }

 private:
  enum class Phase { Idle, Shaking, Judged, Open };

  void OnStreamConnected() override {}
  void OnStreamFailed(int) override {}
  void OnStreamReadable() override;
  void OnStreamWritable() override;

  void Shake();
  bool IsSecureEnough();
  void EndHandshake(bool secured);
  void FailHandshake(std::string reason);
  IoResult Fetch();
  bool Decrypt();
  IoResult FailTls(std::string reason);
  bool Flush();
  bool HasNews() const noexcept;
  void Announce();
  void TellWritable();
  void PostIfAlive(std::function<void()> work);

  EventLoop& loop_;
  std::unique_ptr<ByteStream> plain_;
  std::unique_ptr<TlsSession> session_;
  Ready ready_;
  ByteStream::Handler* handler_ = nullptr;
  Phase phase_ = Phase::Idle;
  TlsFacts facts_;
  std::string reason_;

  ByteQueue raw_;                // has come and is not a whole record yet
  ByteQueue records_;            // whole ones that the session has not taken
  std::size_t shakenBytes_ = 0;  // came during the handshake
  int alert_ = -1;               // the last that was readable
  bool foreign_ = false;         // what stands in raw_ is not TLS

  std::string output_;    // records that must go,
  std::size_t sent_ = 0;  // of which so many bytes have
  int writeError_ = 0;
  std::string text_;      // decrypted,
  std::size_t read_ = 0;  // of which so much has been read

  bool wantRead_ = true;
  bool exhausted_ = false;  // nothing can be decrypted before more comes
  bool announced_ = false;
  bool cutShort_ = false;  // a Write has taken less than all
  bool closed_ = false;
  bool failed_ = false;
  bool truncated_ = false;
  std::shared_ptr<int> alive_ = std::make_shared<int>();  // what is posted asks for it
};

}  // namespace quillon
