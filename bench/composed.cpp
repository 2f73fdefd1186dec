// Sends a message with a large attachment, its encoding included, beside libcurl, which encodes
// while it sends, and beside a bare socket that writes as many bytes out of memory, in blocks of
// two sizes. All of them talk to the same mail host, which throws the messages away.
#include <cstdio>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/support/BareMail.h"
#include "bench/support/CurlMail.h"
#include "bench/support/MailHost.h"
#include "bench/support/Main.h"
#include "bench/support/NativeMail.h"
#include "bench/support/Program.h"
#include "bench/support/Table.h"
#include "codec/Base64.h"

namespace quillon::bench {
namespace {

constexpr int kRounds = 9;
constexpr int kBareRounds = 25;  // these are short
constexpr std::size_t kMegabyte = 1024 * 1024;
constexpr std::size_t kMegabytes = 200;
constexpr const char* kSender = "sender@example.com";
constexpr const char* kRecipient = "reader@example.com";
constexpr const char* kText = "The file is attached.\r\n";

void FillFile(const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same bytes in every run are wanted.
  std::mt19937_64 random(1);
  std::string block(kMegabyte, '\0');
  for (std::size_t written = 0; written < kMegabytes; ++written) {
    for (auto& byte : block) byte = static_cast<char>(random());
    file << block;
  }
  if (!file.flush()) throw std::runtime_error("no room for the attachment");
}

// What the figures compare to: both sides must have sent the file as a whole.
void RequireWhole(const ScratchDirectory& store, std::size_t messages) {
  std::size_t found = 0;
  for (const auto& entry : std::filesystem::directory_iterator(store.Path() / "new")) {
    if (entry.file_size() < Base64EncodedSize(kMegabytes * kMegabyte)) {
      throw std::runtime_error("a message came without its attachment");
    }
    ++found;
  }
  if (found != messages) throw std::runtime_error("a message is missing");
}

class Sides {
 public:
  Sides(std::uint16_t port, std::string path)
      : path_(std::move(path)),
        native_(scratch_.Path().string(), port, 0),
        curl_(port, kSender, kRecipient),
        bare_(port, kSender, kRecipient) {
    native_.SetMessage(kSender, kRecipient, kText);
    native_.SetAttachment(path_);
  }

  double Native() {
    return Seconds([&] { native_.Send(); }) * 1000;
  }
  double Curl() {
    return Seconds([&] { curl_.Send(kText, path_); }) * 1000;
  }
  double Bare(const std::string& block) {
    return Seconds([&] { bare_.Send(Base64EncodedSize(kMegabytes * kMegabyte), block); }) * 1000;
  }

 private:
  ScratchDirectory scratch_;
  std::string path_;
  NativeMail native_;
  CurlMime curl_;
  BareSmtp bare_;
};

void Measure(const std::string& path) {
  {
    const ScratchDirectory store;
    const MailHost host({"--store", store.Path().string()});
    Sides sides(host.SmtpPort(), path);
    sides.Native();
    sides.Curl();
    RequireWhole(store, 2);
  }
  const MailHost host({"--no-store"});
  Sides sides(host.SmtpPort(), path);
  const auto name = "Send of " + std::to_string(kMegabytes) + " MiB attached";
  PrintRow(name, "libcurl",
           Compare(
               kRounds, [&] { return sides.Native(); }, [&] { return sides.Curl(); }),
           " ms", "<= 1, wanted 0.67");
  for (const std::size_t kilobytes : {64U, 1024U}) {
    const auto block = Base64Lines(kilobytes * 1024);
    PrintRow(name, "bare socket, " + std::to_string(kilobytes) + " KiB at once",
             Compare(
                 kBareRounds, [&] { return sides.Native(); }, [&] { return sides.Bare(block); }),
             " ms", "<= 1.5");
  }
  const auto run = RunProgram({(ProgramDirectory() / "bench_composed").string(), "--once",
                               std::to_string(host.SmtpPort()), path},
                              "/dev/null");
  PrintRow(name + ", peak memory", FigureText(run.peakMemory) + " MB of at most 48");
}

int Run(int count, char** arguments) {
  if (count == 4 && std::string_view(arguments[1]) == "--once") {
    Sides(static_cast<std::uint16_t>(std::stoul(arguments[2])), arguments[3]).Native();
    return 0;
  }
  const ScratchDirectory scratch;
  const auto path = (scratch.Path() / "attachment.bin").string();
  FillFile(path);
  Measure(path);
  return 0;
}

}  // namespace
}  // namespace quillon::bench

int main(int count, char** arguments) {
  return quillon::bench::Main("bench_composed",
                              [&] { return quillon::bench::Run(count, arguments); });
}
