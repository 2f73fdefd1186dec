// The POP3 session against a server that says anything: every operation ends, with a result, and
// the next one starts.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzEngine.h"
#include "FuzzText.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::HeaderRequest;
  using quillon::fuzz::FuzzEngine;
  using quillon::fuzz::Require;
  FuzzEngine fuzz(data, size);
  auto& engine = fuzz.engine;

  quillon::PopSettings settings;
  settings.host = "127.0.0.1";
  settings.loginName = "joe";
  settings.password = "a-secret-that-nobody-says";
  settings.security = FuzzEngine::SecurityOf(size);

  const bool tracks = size % 11 < 4;
  for (const auto kind :
       {HeaderRequest::Kind::All, HeaderRequest::Kind::Identifiers, HeaderRequest::Kind::Single}) {
    HeaderRequest request;
    request.kind = kind;
    quillon::FetchedList fetched({"a", "b", "u1"});
    if (tracks) request.fetched = &fetched;
    quillon::HeaderCollector headers({50, size % 3 == 0, "FIXED"});
    Require(fuzz.Run(engine.LoadMessageHeaders(settings, request, headers)) != 0);
    // What is kept is what was said, and no number that was told makes it more.
    Require(headers.Table().size() <= size);
    for (const auto& header : headers.Table()) {
      const auto number = static_cast<std::uint32_t>(std::stoul(header.number));
      Require(kind == HeaderRequest::Kind::Identifiers || !fetched.Contains(number));
    }
  }
  // Of this session, as long as it lasts; looked for by its identifier else.
  const quillon::MessageKey key{1, engine.POPSession(), "a", 1};
  quillon::SplitSettings split;
  split.directory = "/dir";
  split.maximumBodyLines = size % 4;
  split.headersInBody = size % 2 == 0;
  quillon::fuzz::MemoryFiles attachments;
  {
    quillon::MessageCollector message(attachments, quillon::fuzz::Reader(), split, "",
                                      [size] { return size; });
    std::string identifier;
    auto* const wanted = tracks ? &identifier : nullptr;
    const auto result = fuzz.Run(engine.LoadMessage(settings, key, message, wanted));
    Require(result != 0);
    // A byte may become a line end, or a character of three bytes.
    Require(message.Message().body.size() <= 3 * size + 2);
    Require(result != -1 || message.Message().attachments.size() == attachments.files.size());
    if (result == -1) attachments.files.clear();
  }
  Require(attachments.files.empty());
  Require(fuzz.Run(engine.DeleteMessage(settings, key)) != 0);
  fuzz.Run(engine.LogoutPOP());
  Require(!engine.POPLoginStatus());
  const bool logged = fuzz.Dump().find(settings.password) != std::string::npos;
  Require(!logged || fuzz.input.find(settings.password) != std::string_view::npos);
  return 0;
}
