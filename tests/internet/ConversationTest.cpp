// Plays every file of tests/conversations: whole, line by line, byte by byte, and cut off after
// each step of the server and in the middle of it.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

#include "ConversationPlaying.h"

namespace quillon::testing {
namespace {

class ConversationTest : public ::testing::TestWithParam<std::filesystem::path> {
 protected:
  void Play(Shape shape, Cut cut, const std::string& how) {
    for (const auto& complaint : PlayConversation(conversation_, {shape, cut, {}, {}, {}})) {
      ADD_FAILURE() << conversation_.name << ".txt, " << how << ": " << complaint;
    }
  }

  const Conversation conversation_ = ReadConversation(GetParam().string());
};

TEST_P(ConversationTest, PlaysInEveryShape) {
  Play(Shape::Whole, {}, "whole");
  Play(Shape::Line, {}, "line by line");
  Play(Shape::Byte, {}, "byte by byte");
}

TEST_P(ConversationTest, EndsWellWhereverItIsCutOff) {
  const auto steps =
      static_cast<std::size_t>(std::count_if(conversation_.steps.begin(), conversation_.steps.end(),
                                             [](const auto& step) { return step.IsPeers(); }));
  for (std::size_t cut = 0; cut <= steps; ++cut) {
    Play(Shape::Line, {cut, false}, "cut off after step " + std::to_string(cut));
    Play(Shape::Byte, {cut, true}, "cut off in step " + std::to_string(cut));
  }
}

INSTANTIATE_TEST_SUITE_P(Files, ConversationTest,
                         ::testing::ValuesIn(ConversationFiles("conversations")), ConversationName);

}  // namespace
}  // namespace quillon::testing
