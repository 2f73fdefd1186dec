// The secured stream between a network in memory and TLS servers, good and bad.
#include <algorithm>
#include <array>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "net/SecuredStream.h"
#include "platform/Platform.h"
#include "support/FakeNetwork.h"
#include "support/posix/TlsServer.h"

namespace quillon {
namespace {

using testing::FakeNetwork;
using testing::FakePeer;
using ::testing::HasSubstr;
using testing::Issue;
using testing::TlsServer;

constexpr std::size_t kAll = static_cast<std::size_t>(-1);

// Says what a TLS server has to say, in pieces, as far as it may.
class SecuredPeer final : public FakePeer {
 public:
  SecuredPeer(int version, std::size_t piece) : server(Identity(), {}, version), piece_(piece) {}

  void OnBytes(std::string_view bytes) override {
    server.Take(bytes);
    if (onTaken) onTaken();
    Send();
  }
  void OnDrained() override {
    if (onDrained) onDrained();
  }
  // All that the server has made, up to the limit; then the connection ends.
  void Send() {
    const auto output = server.TakeOutput();
    const auto allowed = std::min(output.size(), limit - sent);
    for (std::size_t i = 0; i < allowed; i += piece_) {
      Say(output.substr(i, std::min(piece_, allowed - i)));
    }
    sent += allowed;
    withheld |= allowed < output.size();
    if (sent == limit && !std::exchange(hungUp_, true)) Hangup();
  }

  TlsServer server;
  std::size_t limit = kAll;
  std::size_t sent = 0;
  bool withheld = false;  // something beyond the limit
  std::function<void()> onTaken;
  std::function<void()> onDrained;

 private:
  static const testing::IssuedCertificate& Identity() {
    static const auto identity = Issue({});
    return identity;
  }

  std::size_t piece_;
  bool hungUp_ = false;
};

// Says one thing and takes everything.
class ClearTextPeer final : public FakePeer {
 public:
  explicit ClearTextPeer(std::string words) : words_(std::move(words)) {}
  void OnBytes(std::string_view) override { Say(std::exchange(words_, {})); }

 private:
  std::string words_;
};

// Shakes hands at once and takes records for what they are: text in the clear.
class ClearSession final : public TlsSession {
 public:
  int version = kTls12;
  bool endless = false;
  bool silent = false;  // no record holds any text

  TlsStatus Handshake(ByteQueue& input, std::string&) override {
    input.Drop(input.Size());
    return endless ? TlsStatus::MoreInput : TlsStatus::Ok;
  }
  TlsStatus Open(ByteQueue& input, std::string& text, std::string&) override {
    if (input.Size() == 0) return TlsStatus::MoreInput;
    if (!silent) text += input.View();
    input.Drop(input.Size());
    return TlsStatus::Ok;
  }
  TlsStatus Seal(std::string_view text, std::string& output) override {
    output += text;
    return TlsStatus::Ok;
  }
  std::size_t MaxText() const override { return 100; }
  void Shutdown(std::string&) override {}
  TlsFacts Facts() override { return {version, "clear", 0, {}}; }
  std::string UniqueBinding() override { return {}; }
  const std::string& Reason() const override { return reason_; }

 private:
  std::string reason_;
};

// Takes every other write, and says later that it takes more, unless it has meanwhile: as a socket
// whose buffer empties between two calls.
class FitfulStream final : public ByteStream {
 public:
  explicit FitfulStream(EventLoop& loop) : loop_(loop) {}

  std::size_t taken = 0;

  void SetHandler(Handler& handler) override { handler_ = &handler; }
  IoResult Read(std::span<char>) override { return {IoResult::Status::WouldBlock, 0, 0}; }
  IoResult Write(std::string_view bytes) override {
    refused_ = !refused_;
    if (!refused_) {
      taken += bytes.size();
      return {IoResult::Status::Ok, bytes.size(), 0};
    }
    loop_.Post([this] {
      if (refused_) handler_->OnStreamWritable();
    });
    return {IoResult::Status::WouldBlock, 0, 0};
  }
  void WantRead(bool) override {}
  std::string LocalAddress() const override { return {}; }
  bool IsIPv6() const override { return false; }

 private:
  EventLoop& loop_;
  Handler* handler_ = nullptr;
  bool refused_ = false;
};

class SecuredClient : private ByteStream::Handler {
 public:
  SecuredClient(FakeNetwork& network, std::shared_ptr<FakePeer> peer,
                std::unique_ptr<TlsSession> session)
      : network_(network) {
    network.accept = [peer = std::move(peer)] { return peer; };
    auto plain = network.Connect({}, *this);
    network.RunPending();
    stream = std::make_unique<SecuredStream>(network, std::move(plain), std::move(session));
    stream->SetHandler(*this);
  }
  SecuredClient(FakeNetwork& network, std::unique_ptr<ByteStream> plain)
      : stream(std::make_unique<SecuredStream>(network, std::move(plain),
                                               std::make_unique<ClearSession>())),
        network_(network) {
    stream->SetHandler(*this);
  }

  // Whether the handshake succeeded.
  bool Shake() {
    std::optional<bool> result;
    stream->Begin([&](bool secured) { result = secured; });
    network_.RunUntil([&] { return result.has_value(); }, network_.Now() + 1000);
    if (result.value_or(false)) stream->Accept();
    return result.value_or(false);
  }

  void Send(std::string text) {
    outgoing_ = std::move(text);
    sent_ = 0;
    OnStreamWritable();
  }
  // False when it takes too long.
  bool Run(const std::function<bool()>& done) {
    return network_.RunUntil(done, network_.Now() + 1000);
  }
  bool RunToEnd() {
    return Run([this] { return end.has_value(); });
  }
  bool AllSent() const { return sent_ == outgoing_.size(); }

  std::unique_ptr<SecuredStream> stream;
  std::string received;
  std::optional<IoResult> end;
  std::function<void()> onReadable;

 private:
  void OnStreamConnected() override {}
  void OnStreamFailed(int) override {}
  void OnStreamReadable() override {
    if (onReadable) return onReadable();
    std::array<char, 1000> block;
    const auto result = stream->Read(block);
    if (result.status == IoResult::Status::WouldBlock) return;
    if (result.status == IoResult::Status::Ok) {
      received.append(block.data(), result.count);
      return;
    }
    end = result;
    stream->WantRead(false);
  }
  void OnStreamWritable() override {
    const auto result = stream->Write(std::string_view(outgoing_).substr(sent_));
    if (result.status == IoResult::Status::Ok) sent_ += result.count;
  }

  FakeNetwork& network_;
  std::string outgoing_;
  std::size_t sent_ = 0;
};

std::unique_ptr<TlsSession> RealSession() {
  static const auto library = MakeTlsLibrary();
  return library->MakeSession({"mail.example.com"});
}

using Pace = std::pair<int, std::size_t>;  // the version, and how much comes at once

class SecuredStreamPaces : public ::testing::TestWithParam<Pace> {};
INSTANTIATE_TEST_SUITE_P(, SecuredStreamPaces,
                         ::testing::Values(Pace{kTls12, kAll}, Pace{kTls12, 1}, Pace{kTls13, kAll},
                                           Pace{kTls13, 7}));

TEST_P(SecuredStreamPaces, TextPassesBothWaysAndTheEndIsTold) {
  FakeNetwork network;
  const auto peer = std::make_shared<SecuredPeer>(GetParam().first, GetParam().second);
  peer->onTaken = [&] {
    if (peer->server.Secured() && peer->server.TakeText() == "hello\r\n") {
      peer->server.Say("220 ready\r\n");
      peer->server.Say("221 bye\r\n");
      peer->server.Close();
    }
  };
  SecuredClient client(network, peer, RealSession());
  ASSERT_TRUE(client.Shake()) << client.stream->Reason();
  EXPECT_EQ(client.stream->Facts().version, GetParam().first);
  EXPECT_GE(client.stream->Facts().bits, 128);
  EXPECT_EQ(client.stream->Facts().chain.size(), 1U);
  EXPECT_EQ(client.stream->Session().UniqueBinding().empty(), GetParam().first != kTls12);
  EXPECT_EQ(peer->server.ServerName(), "mail.example.com");
  client.Send("hello\r\n");
  ASSERT_TRUE(client.RunToEnd());
  EXPECT_EQ(client.received, "220 ready\r\n221 bye\r\n");
  EXPECT_EQ(client.end->status, IoResult::Status::Closed);
  EXPECT_FALSE(client.stream->Truncated());
  client.stream->Shutdown();
  EXPECT_TRUE(peer->server.Ended());
}

TEST_P(SecuredStreamPaces, MuchPassesBothWaysAtOnce) {
  FakeNetwork network;
  const auto peer = std::make_shared<SecuredPeer>(GetParam().first, 10'000);
  peer->perTurn = 3000;
  std::string sent;
  while (sent.size() < 1'000'000) sent += std::to_string(sent.size()) + "\r\n";
  std::string heard;
  std::size_t said = 0;
  const auto sayMore = [&] {
    if (!peer->server.Secured() || said == sent.size()) return;
    const auto piece = std::string_view(sent).substr(said, 40'000);
    peer->server.Say(piece);
    said += piece.size();
  };
  peer->onTaken = [&] { heard += peer->server.TakeText(); };
  peer->onDrained = [&] {
    sayMore();
    peer->Send();
  };
  SecuredClient client(network, peer, RealSession());
  ASSERT_TRUE(client.Shake());
  sayMore();
  peer->Send();
  client.Send(sent);
  EXPECT_FALSE(client.AllSent());
  ASSERT_TRUE(client.Run([&] { return heard.size() + client.received.size() == 2 * sent.size(); }));
  EXPECT_TRUE(heard == sent);
  EXPECT_TRUE(client.received == sent);
}

class SecuredStreamVersions : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, SecuredStreamVersions, ::testing::Values(kTls12, kTls13));

// At every byte of what the server sends.
TEST_P(SecuredStreamVersions, AConnectionThatIsCutNeverEndsWell) {
  const std::string text = "220 ready\r\n";
  int shaken = 0;
  bool cut = true;
  for (std::size_t limit = 0; cut; ++limit) {
    FakeNetwork network;
    const auto peer = std::make_shared<SecuredPeer>(GetParam(), kAll);
    peer->limit = limit;
    bool closed = false;
    peer->onTaken = [&] {
      if (peer->server.Secured() && peer->server.TakeText() == "hello") {
        peer->server.Say(text);
        peer->server.Close();
        closed = true;
      }
    };
    SecuredClient client(network, peer, RealSession());
    if (!client.Shake()) {
      ASSERT_FALSE(client.stream->Reason().empty()) << limit;
      continue;
    }
    ++shaken;
    client.Send("hello");
    ASSERT_TRUE(client.RunToEnd()) << limit;
    ASSERT_TRUE(client.received == text || client.received.empty());
    cut = !closed || peer->withheld;
    ASSERT_EQ(client.stream->Truncated(), cut) << limit;
  }
  EXPECT_GT(shaken, 50);
}

TEST(SecuredStream, WhatIsNoHandshakeFailsAtOnce) {
  struct Row {
    std::string words;
    const char* reason;
  };
  const Row rows[] = {
      {"220 mail.example.com ready\r\n", "does not answer in TLS"},
      {"+", "does not answer in TLS"},
      {{"\x80\x2e\x01\x03\x01", 5}, "does not answer in TLS"},
      {{"\x16\x04", 2}, "does not answer in TLS"},
      {{"\x16\x03\x01\xFF\xFF", 5}, "does not answer in TLS"},
      {{"\x15\x03\x03\x00\x02\x02\x28", 7}, "it said: handshake failure (alert 40)"},
      {{"\x15\x03\x01\x00\x02\x02\x46", 7}, "it said: no TLS version in common (alert 70)"},
      {{"\x16\x03\x03\x00\x04\x0E\x00\x00\x00", 9}, ""},
  };
  for (const auto& row : rows) {
    FakeNetwork network;
    SecuredClient client(network, std::make_shared<ClearTextPeer>(row.words), RealSession());
    EXPECT_FALSE(client.Shake());
    EXPECT_THAT(client.stream->Reason(), HasSubstr(row.reason));
    EXPECT_FALSE(client.stream->Reason().empty());
  }
}

TEST(SecuredStream, AServerOfAnOldVersionIsRefused) {
  FakeNetwork network;
  SecuredClient old(network, std::make_shared<SecuredPeer>(TLS1_1_VERSION, kAll), RealSession());
  EXPECT_FALSE(old.Shake());
  // What the system agrees to against its setting is refused too, and so is what it does not tell.
  for (const int version : {0x0302, 0}) {
    auto session = std::make_unique<ClearSession>();
    session->version = version;
    SecuredClient client(network, std::make_shared<ClearTextPeer>(""), std::move(session));
    EXPECT_FALSE(client.Shake());
    EXPECT_THAT(client.stream->Reason(), HasSubstr("1.2 or later"));
  }
}

TEST(SecuredStream, NoTextPassesBeforeTheCertificateIsAccepted) {
  FakeNetwork network;
  const auto peer = std::make_shared<SecuredPeer>(kTls12, kAll);
  peer->onTaken = [&] {
    if (peer->server.Secured() && peer->sent < 5000) peer->server.Say("220 ready\r\n");
  };
  SecuredClient client(network, peer, RealSession());
  bool ready = false;
  client.stream->Begin([&](bool secured) { ready = secured; });
  ASSERT_TRUE(client.Run([&] { return ready; }));
  EXPECT_EQ(client.stream->Write("secret").status, IoResult::Status::WouldBlock);
  network.RunPending();
  std::array<char, 10> block;
  EXPECT_EQ(client.stream->Read(block).status, IoResult::Status::WouldBlock);
  EXPECT_EQ(client.received + peer->server.TakeText(), "");
  // It came with the end of the handshake, so no event of the network tells of it.
  client.stream->Accept();
  EXPECT_TRUE(client.Run([&] { return client.received == "220 ready\r\n"; }));
}

TEST(SecuredStream, DamagedAndForeignBytesEndTheStream) {
  struct Row {
    const char* what;
    std::function<std::string(const std::string&)> damage;
    const char* reason;
  };
  const Row rows[] = {
      {"changed",
       [](const std::string& record) {
         auto changed = record;
         changed.back() = static_cast<char>(changed.back() ^ 1);
         return changed;
       },
       ""},
      {"clear text", [](const std::string& record) { return record + "250 OK\r\n"; },
       "not TLS any more"},
      {"twice", [](const std::string& record) { return record + record; }, ""},
  };
  for (const auto& row : rows) {
    FakeNetwork network;
    const auto peer = std::make_shared<SecuredPeer>(kTls12, kAll);
    SecuredClient client(network, peer, RealSession());
    ASSERT_TRUE(client.Shake());
    peer->server.Say("250 first\r\n");
    peer->Say(row.damage(peer->server.TakeOutput()));
    ASSERT_TRUE(client.RunToEnd()) << row.what;
    EXPECT_EQ(client.end->status, IoResult::Status::Failed);
    EXPECT_EQ(client.end->error, SecuredStream::kTlsError);
    EXPECT_THAT(client.stream->Reason(), HasSubstr(row.reason));
    EXPECT_EQ(client.received, *row.what == 'c' && row.what[1] == 'h' ? "" : "250 first\r\n");
    EXPECT_EQ(client.stream->Write("x").status, IoResult::Status::Failed);
  }
}

TEST(SecuredStream, AHandshakeWithoutEndIsGivenUp) {
  FakeNetwork network;
  auto session = std::make_unique<ClearSession>();
  session->endless = true;
  const auto peer = std::make_shared<ClearTextPeer>("");
  SecuredClient client(network, peer, std::move(session));
  const auto record = std::string("\x16\x03\x03\x40\x00", 5) + std::string(0x4000, 'x');
  for (int i = 0; i < 100; ++i) peer->Say(record);
  EXPECT_FALSE(client.Shake());
  EXPECT_THAT(client.stream->Reason(), HasSubstr("no end"));
}

TEST(SecuredStream, WhatIsHeldUpForAMomentGoesOn) {
  FakeNetwork network;
  auto plain = std::make_unique<FitfulStream>(network);
  const auto* const wire = plain.get();
  SecuredClient client(network, std::move(plain));
  ASSERT_TRUE(client.Shake());
  client.Send(std::string(1000, 'x'));
  EXPECT_TRUE(client.Run([&] { return client.AllSent() && wire->taken == 1000; }));
}

TEST(SecuredStream, RecordsWithoutTextLetOthersHaveTheirTurn) {
  FakeNetwork network;
  auto session = std::make_unique<ClearSession>();
  session->silent = true;
  const auto peer = std::make_shared<ClearTextPeer>("");
  SecuredClient client(network, peer, std::move(session));
  ASSERT_TRUE(client.Shake());
  const std::string record("\x17\x03\x03\x00\x01x", 6);
  for (int i = 0; i < 50; ++i) peer->Say(record);
  peer->Hangup();
  int turns = 0;
  std::function<void()> turn = [&] {
    ++turns;
    if (!client.end) network.Post(turn);
  };
  turn();
  ASSERT_TRUE(client.RunToEnd());
  EXPECT_GT(turns, 5);
  EXPECT_TRUE(client.stream->Truncated());
}

TEST(SecuredStream, MayBeDestroyedInItsEvents) {
  FakeNetwork network;
  const auto peer = std::make_shared<SecuredPeer>(kTls12, kAll);
  peer->onTaken = [&] {
    if (peer->server.Secured()) peer->server.Say("220 ready\r\n");
  };
  SecuredClient client(network, peer, RealSession());
  bool gone = false;
  client.stream->Begin([&](bool) {
    client.stream->Accept();
    client.onReadable = [&] {
      client.stream.reset();
      gone = true;
    };
  });
  EXPECT_TRUE(client.Run([&] { return gone; }));
  network.RunPending();

  SecuredClient other(network, std::make_shared<SecuredPeer>(kTls12, kAll), RealSession());
  other.stream->Begin([&](bool) { other.stream.reset(); });
  EXPECT_TRUE(other.Run([&] { return other.stream == nullptr; }));
}

}  // namespace
}  // namespace quillon
