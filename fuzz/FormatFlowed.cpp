// Flowed text: joining takes nothing but blanks, line ends and quote marks, leaves text alone that
// is not flowed, and gives back paragraphs that were broken into lines.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "codec/FlowedText.h"

namespace {

using quillon::fuzz::Require;

std::string WithoutMarks(std::string text) {
  std::erase_if(
      text, [](char c) { return std::string_view(" \r\n>").find(c) != std::string_view::npos; });
  return text;
}

// Each line of the text as a paragraph, broken at blanks by the data.
std::string Broken(std::string_view text, std::string_view data) {
  std::string lines;
  bool atStart = true;
  std::size_t next = 0;
  for (const char c : text) {
    if (atStart && (c == ' ' || c == '>')) lines += ' ';
    lines += c;
    atStart = c == '\n';
    if (c != ' ' || data[next++ % data.size()] % 2 == 0) continue;
    lines += "\n";
    atStart = true;
  }
  return lines;
}

// No line ends in a blank, and none is a signature's.
std::string Paragraphs(std::string_view text) {
  std::string all;
  for (const char c : text) {
    if (c == '\r') continue;
    if (c == '\n') {
      while (all.ends_with(' ')) all.pop_back();
    }
    all += c == '-' ? '+' : c;
  }
  while (all.ends_with(' ')) all.pop_back();
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const bool deletesBlanks : {false, true}) {
    const auto joined = quillon::JoinFlowedText(text, deletesBlanks);
    Require(joined.size() <= text.size());
    Require(WithoutMarks(joined) == WithoutMarks(text));
  }
  const auto paragraphs = Paragraphs(text);
  Require(quillon::JoinFlowedText(Broken(paragraphs, text), false) == paragraphs);
  return 0;
}
