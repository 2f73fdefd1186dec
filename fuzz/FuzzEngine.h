// The Internet engine with a server that says what the fuzzer wrote.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "FuzzNetwork.h"
#include "MemoryFiles.h"
#include "internet/ProtocolLog.h"
#include "internet/smtppop.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"

namespace quillon::fuzz {

class StillClock final : public LocalClock {
 public:
  LocalTime Now() const override { return {}; }
};

class Nobody final : public SessionListener {
 public:
  void OnStatus(std::string_view) override {}
  void OnProgress(std::uint64_t, std::uint64_t, std::uint32_t) override {}
};

struct FuzzEngine {
  FuzzEngine(const uint8_t* data, std::size_t size)
      : input(reinterpret_cast<const char*>(data), size), network(TakeScript(input)) {
    log.Start();
  }

  static const CodePage& AnsiCodePage() {
    static const auto codePage = MakeAnsiCodePage();
    return *codePage;
  }
  // Runs an operation of the engine to its end.
  std::int32_t Run(Task<SessionResult> work) {
    Operation<SessionResult> operation;
    operation.Start(std::move(work));
    network.RunUntil([&] { return !operation.Running(); }, kNoDeadline);
    return operation.Take().number;
  }
  std::string Dump() {
    const auto& dump = files.files["/POPDUMP.TXT"];
    return {dump.begin(), dump.end()};
  }

  std::string_view input;
  FuzzNetwork network;
  MemoryFiles files;
  ProtocolLog log{files, "/"};
  const StillClock clock;
  Nobody listener;
  smtppop engine{network, network, {files, AnsiCodePage(), clock, log}, listener};
};

}  // namespace quillon::fuzz
