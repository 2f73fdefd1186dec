// Retrieves a large message and splits it into files, beside libcurl, which retrieves it, and
// GMime, which splits what it has retrieved. Both talk to the same mail host.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/support/CurlMail.h"
#include "bench/support/GMimeSplitter.h"
#include "bench/support/MailHost.h"
#include "bench/support/Main.h"
#include "bench/support/NativeMail.h"
#include "bench/support/Program.h"
#include "bench/support/ReceivedMail.h"
#include "bench/support/Table.h"

namespace quillon::bench {
namespace {

constexpr int kRounds = 7;
constexpr std::size_t kMegabyte = 1024 * 1024;
constexpr std::size_t kMegabytes = 200;

void FillMailbox(const std::filesystem::path& store) {
  std::filesystem::create_directories(store / "new");
  std::ofstream file(store / "new" / "0000.1", std::ios::binary);
  MakeLargeMessage(kMegabytes * kMegabyte, kMegabyte,
                   [&](std::string_view piece) { file << piece; });
  if (!file.flush()) throw std::runtime_error("no room for the message");
}

// Each round has a directory of its own, which is removed outside of the time.
class Sides {
 public:
  explicit Sides(std::uint16_t port) : native_(scratch_.Path().string(), 0, port), curl_(port) {
    native_.LoadMessageHeaders();
  }

  double Native() {
    const ScratchDirectory files(scratch_.Path());
    return Seconds([&] { Require(native_.LoadMessage(files.Path().string())); }) * 1000;
  }
  double Peer() {
    const ScratchDirectory files(scratch_.Path());
    return Seconds([&] {
             Require(gmime_.Split(curl_.LoadMessage(), files.Path().string()).files.size());
           }) *
           1000;
  }

 private:
  static void Require(std::size_t files) {
    if (files != kLargeMessageFiles) throw std::runtime_error("a file is missing");
  }

  ScratchDirectory scratch_;
  NativeMail native_;
  CurlPop curl_;
  GMimeSplitter gmime_;
};

int Run(int count, char** arguments) {
  if (count == 3 && std::string_view(arguments[1]) == "--once") {
    Sides(static_cast<std::uint16_t>(std::stoul(arguments[2]))).Native();
    return 0;
  }
  const ScratchDirectory store;
  FillMailbox(store.Path());
  const MailHost host({"--store", store.Path().string(), "--no-lock"});
  const auto name = "LoadMessage of " + std::to_string(kMegabytes) + " MiB, twelve files";
  // First, because a program's peak is at least what this one holds when it starts it.
  const auto run = RunProgram(
      {(ProgramDirectory() / "bench_retrieved").string(), "--once", std::to_string(host.PopPort())},
      "/dev/null");
  PrintRow(name + ", peak memory", FigureText(run.peakMemory) + " MB of at most 48");
  Sides sides(host.PopPort());
  PrintRow(name, "libcurl and GMime",
           Compare(
               kRounds, [&] { return sides.Native(); }, [&] { return sides.Peer(); }),
           " ms", "<= 0.5");
  return 0;
}

}  // namespace
}  // namespace quillon::bench

int main(int count, char** arguments) {
  return quillon::bench::Main("bench_retrieved",
                              [&] { return quillon::bench::Run(count, arguments); });
}
