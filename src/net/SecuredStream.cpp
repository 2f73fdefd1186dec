#include "net/SecuredStream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "net/TlsRecord.h"

namespace quillon {

namespace {

constexpr std::size_t kReadSize = 32 * 1024;

// A handshake of today is 5 to 10 KiB; long chains and lists of issuers make it some more.
constexpr std::size_t kMaxHandshake = 256 * 1024;

// A peer may send records without text as fast as it can. After so many reads of one Read the
// others have a turn.
constexpr int kReadsOfARead = 4;

}  // namespace

SecuredStream::SecuredStream(EventLoop& loop, std::unique_ptr<ByteStream> plain,
                             std::unique_ptr<TlsSession> session)
    : loop_(loop), plain_(std::move(plain)), session_(std::move(session)) {
  plain_->SetHandler(*this);
}

SecuredStream::~SecuredStream() {
  if (phase_ == Phase::Open) Shutdown();
}

void SecuredStream::Begin(Ready ready) {
  ready_ = std::move(ready);
  phase_ = Phase::Shaking;
  plain_->WantRead(true);
  Shake();
}

void SecuredStream::Accept() {
  phase_ = Phase::Open;
  WantRead(wantRead_);
}

// One read of the stream below; what has become whole records joins the others.
IoResult SecuredStream::Fetch() {
  std::array<char, kReadSize> block;
  const auto result = plain_->Read(block);
  if (result.status != IoResult::Status::Ok) return result;
  raw_.Append({block.data(), result.count});
  const auto frames = ReadTlsFrames(raw_.View());
  foreign_ = frames.foreign;
  if (frames.alert >= 0) alert_ = frames.alert;
  records_.Append(raw_.View().substr(0, frames.whole));
  raw_.Drop(frames.whole);
  return result;
}

void SecuredStream::Shake() {
  for (;;) {
    const auto status = session_->Handshake(records_, output_);
    Flush();
    if (status == TlsStatus::Ok) return EndHandshake(IsSecureEnough());
    if (status == TlsStatus::Failed) return FailHandshake(session_->Reason());
    if (status == TlsStatus::Closed) return FailHandshake("the server ended the handshake");
    if (foreign_) return FailHandshake("the server does not answer in TLS");
    if (shakenBytes_ > kMaxHandshake) return FailHandshake("the server's handshake has no end");
    const auto result = Fetch();
    shakenBytes_ += result.count;
    if (result.status == IoResult::Status::WouldBlock) return;
    if (result.status == IoResult::Status::Closed) {
      return FailHandshake("the server hung up during the handshake");
    }
    if (result.status == IoResult::Status::Failed) {
      return FailHandshake("the connection broke during the handshake (error " +
                           std::to_string(result.error) + ")");
    }
  }
}

// Read from what was agreed, because systems do not obey every setting of a lowest version.
bool SecuredStream::IsSecureEnough() {
  facts_ = session_->Facts();
  if (facts_.version >= kTls12) return true;
  reason_ = "the server speaks no version of TLS that is secure today (1.2 or later)";
  return false;
}

void SecuredStream::FailHandshake(std::string reason) {
  reason_ = std::move(reason);
  if (alert_ > 0) reason_ += "; it said: " + TlsAlertText(alert_);
  EndHandshake(false);
}

void SecuredStream::EndHandshake(bool secured) {
  phase_ = Phase::Judged;
  failed_ = !secured;
  plain_->WantRead(false);
  // Not from here: Begin itself may find that it fails.
  PostIfAlive([this, secured] {
    const auto ready = std::exchange(ready_, nullptr);
    ready(secured);
  });
}

// Whether there is text now. Otherwise the stream has ended, or must fetch more.
bool SecuredStream::Decrypt() {
  while (read_ == text_.size()) {
    text_.clear();
    read_ = 0;
    if (closed_ || failed_) return false;
    const auto status = session_->Open(records_, text_, output_);
    // When what held a Write up leaves here, the stream below has nothing more to tell.
    if (Flush() && cutShort_) PostIfAlive([this] { TellWritable(); });
    closed_ = status == TlsStatus::Closed;
    exhausted_ = status == TlsStatus::MoreInput;
    if (status == TlsStatus::Failed) FailTls(session_->Reason());
    if (exhausted_) break;
  }
  return read_ < text_.size();
}

IoResult SecuredStream::FailTls(std::string reason) {
  failed_ = true;
  if (reason_.empty()) reason_ = std::move(reason);
  return {IoResult::Status::Failed, 0, kTlsError};
}

IoResult SecuredStream::Read(std::span<char> buffer) {
  if (phase_ != Phase::Open) return {IoResult::Status::WouldBlock, 0, 0};
  for (int reads = 0; !Decrypt(); ++reads) {
    if (failed_) return {IoResult::Status::Failed, 0, kTlsError};
    if (closed_) return {IoResult::Status::Closed, 0, 0};
    if (foreign_) return FailTls("what the server sends is not TLS any more");
    if (records_.Size() > kMaxHandshake) return FailTls("a message of the server has no end");
    if (reads == kReadsOfARead) {
      // There may be more, of which nobody else will tell.
      exhausted_ = false;
      Announce();
      return {IoResult::Status::WouldBlock, 0, 0};
    }
    const auto result = Fetch();
    truncated_ = result.status == IoResult::Status::Closed;
    if (result.status != IoResult::Status::Ok) return {result.status, 0, result.error};
  }
  const auto count = std::min(buffer.size(), text_.size() - read_);
  std::memcpy(buffer.data(), text_.data() + read_, count);
  read_ += count;
  Announce();
  return {IoResult::Status::Ok, count, 0};
}

IoResult SecuredStream::Write(std::string_view bytes) {
  if (phase_ != Phase::Open) return {IoResult::Status::WouldBlock, 0, 0};
  if (failed_) return {IoResult::Status::Failed, 0, kTlsError};
  std::size_t taken = 0;
  while (taken < bytes.size() && Flush()) {
    const auto piece = bytes.substr(taken, session_->MaxText());
    if (session_->Seal(piece, output_) != TlsStatus::Ok) return FailTls(session_->Reason());
    taken += piece.size();
  }
  // What has been held up is left to the stream below: should it take all of it now, it would have
  // nothing more to tell.
  if (taken == bytes.size()) Flush();
  if (writeError_ != 0) return {IoResult::Status::Failed, 0, writeError_};
  cutShort_ = taken < bytes.size();
  if (cutShort_ && taken == 0) return {IoResult::Status::WouldBlock, 0, 0};
  return {IoResult::Status::Ok, taken, 0};
}

// Whether all that is encrypted has left.
bool SecuredStream::Flush() {
  while (sent_ < output_.size()) {
    const auto result = plain_->Write(std::string_view(output_).substr(sent_));
    if (result.status == IoResult::Status::Failed) writeError_ = result.error;
    if (result.status != IoResult::Status::Ok || result.count == 0) return false;
    sent_ += result.count;
  }
  output_.clear();
  sent_ = 0;
  return true;
}

void SecuredStream::Shutdown() {
  if (phase_ == Phase::Idle || failed_) return;
  session_->Shutdown(output_);
  Flush();
}

void SecuredStream::WantRead(bool want) {
  wantRead_ = want;
  if (phase_ != Phase::Open) return;
  plain_->WantRead(want);
  Announce();
}

bool SecuredStream::HasNews() const noexcept {
  return read_ < text_.size() || !exhausted_ || closed_ || failed_;
}

void SecuredStream::Announce() {
  if (announced_ || !wantRead_ || !HasNews()) return;
  announced_ = true;
  PostIfAlive([this] {
    announced_ = false;
    if (wantRead_ && handler_ != nullptr) handler_->OnStreamReadable();
  });
}

void SecuredStream::PostIfAlive(std::function<void()> work) {
  loop_.Post([work = std::move(work), alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired()) work();
  });
}

// The handler may destroy the stream.
void SecuredStream::OnStreamReadable() {
  if (phase_ == Phase::Shaking) return Shake();
  if (phase_ == Phase::Open && wantRead_ && handler_ != nullptr) handler_->OnStreamReadable();
}

void SecuredStream::OnStreamWritable() {
  if (Flush()) TellWritable();
}

void SecuredStream::TellWritable() {
  if (std::exchange(cutShort_, false) && handler_ != nullptr) handler_->OnStreamWritable();
}

}  // namespace quillon
