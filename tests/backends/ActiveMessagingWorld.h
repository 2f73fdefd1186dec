// A back end of Active Messaging on a made-up mail program, with the records of one Server.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "backends/activemsg/ActiveMessagingBackEnd.h"
#include "core/WholeFile.h"
#include "support/FakeMessaging.h"
#include "support/TestWorld.h"

namespace quillon::testing {

// As the mail program has numbers of MAPI.
inline constexpr auto kNetworkError = static_cast<std::int32_t>(0x80040115U);

class RecordingRichText final : public RichTextLibrary {
 public:
  std::int32_t Write(const std::string& profile, const std::string& messageId,
                     const std::string& storeId, const std::string& text) override {
    written.push_back(profile + "|" + messageId + "|" + storeId + "|" + text);
    return answer;
  }
  std::int32_t answer = 0;
  std::vector<std::string> written;
};

class ActiveMessagingWorld : public TestWorld {
 public:
  ActiveMessagingWorld() {
    instance.mailSystem = mail_system::kActiveMessaging;
    instance.loginName = "joe";
    instance.password = "secret";
    instance.attachmentDirectory = folder.Path();
    instance.errorDisplay = kTrue;
    shared.switches.temporaryDirectory = temporary.Path();
  }

  std::string WriteFile(const std::string& name, const std::string& text) {
    auto path = sources.Path(name);
    WriteWholeFile(*files, path, BytesOf(text));
    return path;
  }

  class Prompt final : public LoginPrompt {
   public:
    Answer Ask(const LoginQuestion&, LoginFields& fields) override {
      ++questions;
      if (answer == Answer::Entered) fields = {{}, "asked", "for"};
      return answer;
    }
    Answer answer = Answer::Unavailable;
    int questions = 0;
  };
  class Clock final : public LocalClock {
   public:
    LocalTime Now() const override { return {2026, 11, 22, 0, 18, 0, 0, 0}; }
  };

  TempFolder temporary;  // for what is packed
  TempFolder sources;    // of attachments
  FakeMessaging program;
  RecordingRichText richText;
  Prompt prompt;
  Clock clock;
  InstanceState instance;
  MailRequest request{instance, shared};
  ActiveMessagingLibrary library{program.objects};
  ActiveMessagingBackEnd backEnd{
      {library, richText, *files, clock, messageBox, prompt, configuration}};
};

}  // namespace quillon::testing
