// Line sockets over real connections.
#include <algorithm>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "net/LineSocket.h"
#include "platform/Platform.h"
#include "support/LoopbackPeer.h"

namespace quillon {
namespace {

using testing::LoopbackPeer;

constexpr TickCount kPatience = 20000;

// Connects and keeps what arrives.
class Client : private LineSocket::Handler, private ByteStream::Handler {
 public:
  Client(NetworkLoop& loop, const SocketAddress& address) : loop_(loop), socket_(loop, *this) {
    stream_ = loop.Connect(address, *this);
    EXPECT_TRUE(loop.RunUntil([this] { return stream_ == nullptr; }, loop.Now() + kPatience));
  }

  bool WaitForEnd() {
    return loop_.RunUntil([this] { return closed.has_value(); }, loop_.Now() + kPatience);
  }

  void Send(std::string bytes) {
    outgoing_ = std::move(bytes);
    sent_ = 0;
    OnSendReady();
  }

  std::vector<std::string> lines;
  std::vector<std::size_t> pieces;  // sizes of the incomplete ones
  std::string unfinished;
  std::optional<int> closed;
  int refusals = 0;  // writes that took less than all
  std::function<void()> inLine;
  std::function<void()> inPiece;
  std::function<void()> inUnfinished;
  LineSocket& Socket() { return socket_; }

 private:
  void OnStreamConnected() override { socket_.Attach(std::move(stream_)); }
  void OnStreamFailed(int) override { stream_.reset(); }
  void OnStreamReadable() override {}
  void OnStreamWritable() override {}

  void OnLine(std::string_view text, bool complete) override {
    if (!complete) {
      pieces.push_back(text.size());
      part_ += text;
      if (inPiece) inPiece();
      return;
    }
    lines.push_back(part_ + std::string(text));
    part_.clear();
    if (inLine) inLine();
  }
  void OnUnfinishedLine(std::string_view text) override {
    unfinished += text;
    if (inUnfinished) inUnfinished();
  }
  void OnSendReady() override {
    sent_ += socket_.Write(std::string_view(outgoing_).substr(sent_));
    refusals += sent_ < outgoing_.size() ? 1 : 0;
  }
  void OnClosed(int error) override { closed = error; }

  NetworkLoop& loop_;
  std::unique_ptr<ByteStream> stream_;
  LineSocket socket_;
  std::string outgoing_;
  std::size_t sent_ = 0;
  std::string part_;
};

TEST(LineSocket, DeliversEveryLineInOrderHoweverLongItIs) {
  const auto loop = MakeNetworkLoop();
  const std::string longLine(200'000, 'x');
  // The CR of the second one is the last byte that fits into the buffer.
  const std::string edgeLine(64 * 1024 - 1, 'y');
  LoopbackPeer peer([&](LoopbackPeer::Connection& connection) {
    connection.Send("first\r\n\r\nbare\nin\rside\r\n" + longLine + "\r\n");
    connection.Send(edgeLine + "\r\n" + "no end");
  });
  Client client(*loop, peer.Address());
  ASSERT_TRUE(client.WaitForEnd());
  EXPECT_EQ(client.closed, 0);
  EXPECT_EQ(client.lines,
            (std::vector<std::string>{"first", "", "bare", "in\rside", longLine, edgeLine}));
  EXPECT_EQ(client.unfinished, "no end");
  EXPECT_GE(client.pieces.size(), 3U);
}

TEST(LineSocket, WritesEverythingToAPeerThatReadsLate) {
  const auto loop = MakeNetworkLoop();
  std::string sent;
  while (sent.size() < 24U * 1024 * 1024) sent += std::to_string(sent.size()) + "\r\n";
  std::promise<void> begin;
  std::string received;
  LoopbackPeer peer([&](LoopbackPeer::Connection& connection) {
    begin.get_future().wait();
    received = connection.Receive(sent.size());
    connection.Send("all\r\n");
  });
  Client client(*loop, peer.Address());
  client.Send(sent);
  begin.set_value();
  ASSERT_TRUE(client.WaitForEnd());
  EXPECT_EQ(client.lines, std::vector<std::string>{"all"});
  EXPECT_TRUE(received == sent);
  EXPECT_GT(client.refusals, 0);
}

TEST(LineSocket, WaitingInsideALineNeitherNestsNorLosesLines) {
  const auto loop = MakeNetworkLoop();
  std::promise<void> begin;  // the first line must not come before there is somebody to take it
  LoopbackPeer peer([&](LoopbackPeer::Connection& connection) {
    begin.get_future().wait();
    connection.Send("one\r\ntwo\r\n");
    connection.ReceiveLine();
    connection.Send("three\r\nfour\r\n");
  });
  Client client(*loop, peer.Address());
  std::size_t linesAfterWait = 0;
  client.inLine = [&] {
    if (client.lines.size() != 1) return;
    client.Send("go on\r\n");
    loop->RunUntil([] { return false; }, loop->Now() + 50);
    linesAfterWait = client.lines.size();
  };
  begin.set_value();
  ASSERT_TRUE(client.WaitForEnd());
  EXPECT_EQ(linesAfterWait, 1U);
  EXPECT_EQ(client.lines, (std::vector<std::string>{"one", "two", "three", "four"}));
}

// Whether the handler is told of each line or takes what has come with it.
class LineSocketFlood : public ::testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(, LineSocketFlood, ::testing::Bool());

TEST_P(LineSocketFlood, LetsOthersHaveTheirTurn) {
  const auto loop = MakeNetworkLoop();
  constexpr std::size_t kLines = 200'000;
  std::promise<void> begin;
  std::promise<void> underWay;
  LoopbackPeer peer([&](LoopbackPeer::Connection& connection) {
    begin.get_future().wait();
    connection.Send("first\n" + std::string(60'000, '\n'));
    underWay.set_value();
    connection.Send(std::string(kLines - 60'000, '\n') + "last");
  });
  Client client(*loop, peer.Address());
  client.inLine = [&] {
    // So much waits then as one read takes.
    if (client.lines.size() == 1) underWay.get_future().wait();
    for (std::string_view line; GetParam() && client.Socket().TakeLine(line);) {
      client.lines.emplace_back(line);
    }
  };
  begin.set_value();
  std::size_t before = 0;
  std::size_t most = 0;
  ASSERT_TRUE(loop->RunUntil(
      [&] {
        most = std::max(most, client.lines.size() - before);
        before = client.lines.size();
        return client.closed.has_value();
      },
      loop->Now() + kPatience));
  EXPECT_EQ(client.lines.size(), kLines + 1);
  EXPECT_EQ(client.lines[0], "first");
  EXPECT_EQ(client.unfinished, "last");
  EXPECT_LE(most, 4000U);
}

// Each throw comes out of the wait once, and nothing that the peer said is lost or told twice.
TEST(LineSocket, AHandlerThatThrowsLosesNothing) {
  const auto loop = MakeNetworkLoop();
  const std::string longLine(100'000, 'x');
  std::promise<void> begin;
  LoopbackPeer peer([&](LoopbackPeer::Connection& connection) {
    begin.get_future().wait();
    connection.Send("one\r\ntwo\r\n" + longLine + "\r\nthree\r\nno end");
  });
  Client client(*loop, peer.Address());
  const auto fail = [] { throw std::runtime_error("failed"); };
  client.inLine = client.inPiece = client.inUnfinished = fail;
  begin.set_value();
  int thrown = 0;
  while (!client.closed) {
    try {
      ASSERT_TRUE(client.WaitForEnd());
    } catch (const std::runtime_error&) {
      ++thrown;
    }
  }
  EXPECT_EQ(client.lines, (std::vector<std::string>{"one", "two", longLine, "three"}));
  EXPECT_EQ(client.unfinished, "no end");
  EXPECT_EQ(client.closed, 0);
  EXPECT_EQ(thrown, 4 + static_cast<int>(client.pieces.size()) + 1);
}

TEST(LineSocket, ClosedInsideALineIsSilentAfterwards) {
  const auto loop = MakeNetworkLoop();
  std::promise<void> begin;
  LoopbackPeer peer([&](LoopbackPeer::Connection& connection) {
    begin.get_future().wait();
    connection.Send("one\r\ntwo\r\n");
    connection.Receive();
  });
  Client client(*loop, peer.Address());
  client.inLine = [&] { client.Socket().Close(); };
  begin.set_value();
  loop->RunUntil([&] { return !client.Socket().IsOpen(); }, loop->Now() + kPatience);
  peer.Join();
  loop->RunPending();
  EXPECT_EQ(client.lines, std::vector<std::string>{"one"});
  EXPECT_FALSE(client.closed.has_value());
}

TEST(LineSocket, GivesTheLastWordsOfAPeerThatHangsUpWhileWritten) {
  const auto loop = MakeNetworkLoop();
  LoopbackPeer peer([](LoopbackPeer::Connection& connection) {
    connection.ReceiveLine();
    connection.Send("552 too much\r\n");
  });
  Client client(*loop, peer.Address());
  client.Send("a line\r\n" + std::string(32U * 1024 * 1024, 'z'));
  ASSERT_TRUE(client.WaitForEnd());
  EXPECT_EQ(client.lines, std::vector<std::string>{"552 too much"});
}

}  // namespace
}  // namespace quillon
