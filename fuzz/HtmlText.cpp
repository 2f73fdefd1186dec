// HTML of strangers: its text has no tags of its own making, grows with its length alone, and plain
// words come through.
#include "codec/HtmlText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "codec/HtmlFacts.h"

namespace {

using quillon::fuzz::Require;

// What stands for itself in HTML and in text.
std::string Words(std::string_view data) {
  std::string words;
  for (const char c : data) words += static_cast<char>('a' + static_cast<unsigned char>(c) % 26);
  return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string html(reinterpret_cast<const char*>(data), size);
  const auto text = quillon::PlainTextOfHtml(html);
  Require(text.size() <= html.size() * 12 + 12);
  Require(text.find('\0') == std::string::npos);
  for (const auto& id : quillon::ContentIdsIn(html)) Require(!id.empty());
  Require(quillon::CharacterSetOfHtml(html).size() <= html.size());
  const auto words = Words(html);
  Require(quillon::PlainTextOfHtml("<p>" + words + "</p>" + html).starts_with(words));
  return 0;
}
