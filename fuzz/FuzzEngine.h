// The Internet engine with a server that says what the fuzzer wrote.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

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

struct FuzzEngine {
  FuzzEngine(const uint8_t* data, std::size_t size)
      : input(reinterpret_cast<const char*>(data), size), network(TakeScript(input)) {
    log.Start();
  }

  static const CodePage& AnsiCodePage() {
    static const auto codePage = MakeAnsiCodePage();
    return *codePage;
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
  smtppop engine{network, network, {files, AnsiCodePage(), clock, log}};
};

}  // namespace quillon::fuzz
