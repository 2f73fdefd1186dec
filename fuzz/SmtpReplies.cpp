// The SMTP session against a server that says anything: every operation ends, with a result, and
// the next one starts.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzNetwork.h"
#include "internet/ProtocolLog.h"
#include "internet/smtppop.h"

namespace {

class StillClock final : public quillon::LocalClock {
 public:
  quillon::LocalTime Now() const override { return {}; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  quillon::fuzz::FuzzNetwork network(quillon::fuzz::TakeScript(input));
  quillon::fuzz::MemoryFiles files;
  quillon::ProtocolLog log(files, "/");
  log.Start();
  const StillClock clock;
  static const auto kCodePage = quillon::MakeAnsiCodePage();
  quillon::smtppop engine(network, network, {files, *kCodePage, clock, log});

  quillon::SmtpSettings settings;
  settings.host = "127.0.0.1";
  settings.sender = "joe@example.org";
  settings.greetWithHelo = size % 2 == 0;
  quillon::OutgoingMessage message;
  message.from = settings.sender;
  message.whoTo = {"ann@example.org", "bob@example.org"};
  message.body = "first\n.\n..last";

  for (int round = 0; round < 2; ++round) {
    engine.BeginSend(settings, message, {}, {});
    const auto sent = engine.Wait();
    Require(sent != 0 && sent < 1000);
    Require((sent == 20) <= !engine.RefusedRecipients().empty());
    Require(engine.RefusedRecipients().size() <= 2);
    engine.BeginResolveAddress(settings, "ann");
    Require(engine.Wait() != 0);
  }
  engine.BeginLogoutSMTP();
  engine.Wait();
  Require(!engine.SMTPLoginStatus());
  return 0;
}
