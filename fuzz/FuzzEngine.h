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
#include "oauth/NoAccessTokens.h"
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
  static TlsLibrary& Tls() {
    static const auto library = MakeTlsLibrary();
    return *library;
  }
  // What is asked of the server, by the size of what the fuzzer wrote: nothing new half the time.
  static ServerSecurity SecurityOf(std::size_t size) {
    ServerSecurity security;
    if (size % 5 < 2) return security;
    security.extensions = true;
    if (size % 5 == 3) security.connection = ConnectionSecurity::StartTlsIfOffered;
    if (size % 7 < 3) {
      security.credentials.loginName = "joe";
      security.credentials.password = "a-secret-that-nobody-says";
      security.login.plainTextLogin = size % 2 == 0;
    }
    return security;
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
  std::unique_ptr<Crypto> crypto = MakeCrypto();
  NoAccessTokens tokens{network};
  smtppop engine{network,
                 network,
                 {Tls(), *crypto, tokens, [](const std::function<void()>& work) { work(); }},
                 {files, AnsiCodePage(), clock, log},
                 listener};
};

}  // namespace quillon::fuzz
