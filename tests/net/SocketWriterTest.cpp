#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>

#include "net/LineSocket.h"
#include "net/SocketWriter.h"
#include "support/FakeNetwork.h"

namespace quillon {
namespace {

using testing::FakeNetwork;
using testing::FakePeer;

constexpr std::size_t kMegabyte = 1024 * 1024;

class CountingPeer final : public FakePeer {
 public:
  void OnBytes(std::string_view bytes) override { count += bytes.size(); }

  std::size_t count = 0;
};

// So many bytes; remembers the largest block that was asked for.
class Bytes final : public DataSource {
 public:
  explicit Bytes(std::size_t size) : left_(size) {}

  State Fill(std::string& block, std::size_t wanted) override {
    largest = std::max(largest, wanted);
    const auto count = std::min(wanted, left_);
    block.append(count, 'x');
    left_ -= count;
    return left_ == 0 ? State::End : State::More;
  }

  std::size_t largest = 0;

 private:
  std::size_t left_;
};

class SocketWriterTest : public ::testing::Test,
                         private LineSocket::Handler,
                         private ByteStream::Handler {
 protected:
  SocketWriterTest() {
    network_.accept = [this] { return peer_; };
    stream_ = network_.Connect({}, *this);
    network_.RunUntil([this] { return socket_.IsOpen(); }, network_.Now() + 1000);
    writer_.SetTimeout(9000);
  }

  // Returns the largest block.
  std::size_t Write(std::size_t size) {
    Bytes source(size);
    bool done = false;
    const auto before = peer_->count;
    writer_.SocketSendData(source, [&](bool written) { done = written; });
    network_.RunUntil([&] { return done; }, kNoDeadline - 1);
    EXPECT_TRUE(done);
    EXPECT_EQ(peer_->count - before, size);
    return source.largest;
  }

  std::shared_ptr<CountingPeer> peer_ = std::make_shared<CountingPeer>();
  FakeNetwork network_;
  LineSocket socket_{network_, *this};
  SocketWriter writer_{network_, socket_, [] { ADD_FAILURE() << "stuck"; }};

 private:
  void OnLine(std::string_view, bool) override {}
  void OnSendReady() override { writer_.OnSendReady(); }
  void OnUnfinishedLine(std::string_view) override {}
  void OnClosed(int) override {}
  void OnStreamConnected() override { socket_.Attach(std::move(stream_)); }
  void OnStreamFailed(int) override {}
  void OnStreamReadable() override {}
  void OnStreamWritable() override {}

  std::unique_ptr<ByteStream> stream_;
};

TEST_F(SocketWriterTest, OnlyAConnectionThatHasShownItsSpeedIsGivenLargeBlocks) {
  constexpr std::size_t kSmall = 64 * 1024;
  // What the buffers on the way may have swallowed shows nothing, nor does an earlier message.
  for (int message = 0; message < 3; ++message) EXPECT_EQ(Write(8 * kMegabyte), kSmall);
  EXPECT_EQ(Write(12 * kMegabyte), kMegabyte);
  network_.timePerLook = 1000;
  EXPECT_EQ(Write(24 * kMegabyte), kSmall);
  network_.timePerLook = 0;
  peer_->perTurn = 100'000;
  EXPECT_EQ(Write(12 * kMegabyte), kMegabyte);
}

// The command takes the rest of the data with it, and no event tells of that any more.
TEST_F(SocketWriterTest, ACommandBehindTheLastBlockDoesNotHideItsEnd) {
  Bytes source(1000);
  bool done = false;
  peer_->appetite = 400;
  writer_.SocketSendData(source, [&](bool written) { done = written; });
  network_.RunPending();
  EXPECT_FALSE(done);
  peer_->appetite = 10000;
  EXPECT_TRUE(writer_.WriteCommand("RSET"));
  network_.RunPending();
  EXPECT_TRUE(done);
  EXPECT_EQ(peer_->count, 1006U);
}

}  // namespace
}  // namespace quillon
