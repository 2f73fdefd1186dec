// Conversations over TLS: those of old servers on a port that is encrypted from the first byte on,
// and those of today's servers, which say so themselves. Cut off after each step of the server, and
// in the middle of it.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

#include "internet/ConversationPlaying.h"
#include "support/posix/TestCertificates.h"
#include "support/posix/TlsFilter.h"

namespace quillon::testing {
namespace {

struct Certificates {
  IssuedCertificate root = IssueRoot("Test Root");
  IssuedCertificate own;

  Certificates() {
    CertificateOrder order;
    order.names = "DNS:smtp.example,DNS:pop.example";
    order.issuer = &root;
    own = Issue(order);
  }
};

const Certificates& Made() {
  static const Certificates certificates;
  return certificates;
}

std::unique_ptr<PeerFilter> MakeFilter() {
  return std::make_unique<TlsFilter>(Made().own);
}

class SecuredConversation : public ::testing::TestWithParam<std::filesystem::path> {
 protected:
  void Play(PlaySettings settings, const std::string& how) {
    const auto prepare = std::exchange(settings.prepare, nullptr);
    settings.prepare = [&](InternetWorld& world) {
      world.security.tls.root = Made().root.Der();
      if (prepare) prepare(world);
    };
    for (const auto& complaint : PlayConversation(conversation_, settings)) {
      ADD_FAILURE() << conversation_.name << ".txt, " << how << ": " << complaint;
    }
  }
  // Cut off everywhere.
  void PlayCut(PlaySettings settings) {
    const auto steps = static_cast<std::size_t>(
        std::count_if(conversation_.steps.begin(), conversation_.steps.end(),
                      [](const auto& step) { return step.IsPeers(); }));
    for (std::size_t cut = 0; cut <= steps; ++cut) {
      for (const bool halfway : {false, true}) {
        settings.shape = halfway ? Shape::Byte : Shape::Line;
        settings.cut = {cut, halfway};
        Play(settings, "cut off at step " + std::to_string(cut));
      }
    }
  }

  const Conversation conversation_ = ReadConversation(GetParam().string());
};

// But for those that count the bytes of the wire.
std::vector<std::filesystem::path> OldConversations() {
  auto files = ConversationFiles("conversations");
  std::erase_if(files, [](const auto& file) {
    const auto steps = ReadConversation(file.string()).steps;
    return std::any_of(steps.begin(), steps.end(), [](const auto& step) {
      return step.text.starts_with("appetite ") || step.text.starts_with("perturn ");
    });
  });
  return files;
}

class OldConversationOverTls : public SecuredConversation {
 protected:
  static PlaySettings Settings() {
    PlaySettings settings;
    settings.secured = MakeFilter;
    settings.prepare = [](InternetWorld& world) {
      world.instance.access.smtpSecurity = world.instance.access.popSecurity = 3;
    };
    return settings;
  }
};

TEST_P(OldConversationOverTls, Plays) {
  Play(Settings(), "whole");
}

TEST_P(OldConversationOverTls, EndsWellWhereverItIsCutOff) {
  PlayCut(Settings());
}

INSTANTIATE_TEST_SUITE_P(Files, OldConversationOverTls, ::testing::ValuesIn(OldConversations()),
                         ConversationName);

class ConversationOfToday : public SecuredConversation {
 protected:
  static PlaySettings Settings() {
    PlaySettings settings;
    settings.secure = MakeFilter;
    return settings;
  }
};

TEST_P(ConversationOfToday, PlaysInEveryShape) {
  for (const auto shape : {Shape::Whole, Shape::Line, Shape::Byte}) {
    auto settings = Settings();
    settings.shape = shape;
    Play(settings, "in shape " + std::to_string(static_cast<int>(shape)));
  }
}

TEST_P(ConversationOfToday, EndsWellWhereverItIsCutOff) {
  PlayCut(Settings());
}

INSTANTIATE_TEST_SUITE_P(Files, ConversationOfToday,
                         ::testing::ValuesIn(ConversationFiles("conversations/secured")),
                         ConversationName);

}  // namespace
}  // namespace quillon::testing
