// Plays a conversation against the back end. However it ends, the next call must work.
#pragma once

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "ConversationFile.h"
#include "InternetWorld.h"
#include "Peers.h"

namespace quillon::testing {

struct PlaySettings {
  Shape shape = Shape::Whole;
  Cut cut;
  // Before the first call, and before the one that must work.
  std::function<void(InternetWorld& world)> prepare;
  using MakeFilter = std::function<std::unique_ptr<PeerFilter>()>;
  // Of every connection, from its first byte on; then the server of the conversation is asked for
  // more than it has heard of.
  MakeFilter secured;
  // Where the conversation says so.
  MakeFilter secure;
};

// The complaints, if any.
std::vector<std::string> PlayConversation(const Conversation& conversation,
                                          const PlaySettings& settings);

// All in the folder of tests/.
std::vector<std::filesystem::path> ConversationFiles(const std::string& folder);

std::string ConversationName(const ::testing::TestParamInfo<std::filesystem::path>& info);

}  // namespace quillon::testing
