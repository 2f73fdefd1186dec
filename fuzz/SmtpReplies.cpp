// The SMTP session against a server that says anything: every operation ends, with a result, and
// the next one starts; no temporary file stays.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzEngine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  quillon::fuzz::FuzzEngine fuzz(data, size);
  auto& engine = fuzz.engine;

  quillon::SmtpSettings settings;
  settings.host = "127.0.0.1";
  settings.sender = "joe@example.org";
  settings.greetWithHelo = size % 2 == 0;
  settings.security = quillon::fuzz::FuzzEngine::SecurityOf(size);
  quillon::OutgoingMessage message;
  message.from = settings.sender;
  message.whoTo = {"ann@example.org", "bob@example.org"};
  message.body = "first\n.\n..last";
  message.attachments = {{"/attached", "attached"}};
  message.attachmentEncoding =
      size % 3 == 0 ? quillon::attachment_encoding::kMime : std::int16_t{0};
  fuzz.files.files["/attached"].resize(914);  // its last line begins with a dot

  for (int round = 0; round < 2; ++round) {
    const auto sent = fuzz.Run(engine.Send(settings, message, {}, {}));
    Require(sent != 0 && sent < 1000);
    Require(sent != 20 || !engine.RefusedRecipients().empty());
    Require(engine.RefusedRecipients().size() <= 2);
    Require(fuzz.files.directories.empty());
    Require(fuzz.files.files.size() == 2);  // the log, and what was attached
    Require(fuzz.Run(engine.ResolveAddress(settings, "ann")) != 0);
  }
  fuzz.Run(engine.LogoutSMTP());
  Require(!engine.SMTPLoginStatus());
  return 0;
}
