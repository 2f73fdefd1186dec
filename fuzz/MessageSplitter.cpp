// A whole received message, as raw bytes and as words of the mail alphabet: nothing crashes, every
// file is inside the directory and listed, and a message that does not end leaves none.
#include "codec/MessageSplitter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzText.h"
#include "MemoryFiles.h"

namespace {

using quillon::MessageSplitter;
using quillon::SplitMessage;
using quillon::SplitSettings;
using quillon::fuzz::MemoryFiles;
using quillon::fuzz::Require;

constexpr std::array<std::string_view, 40> kWords{"\n",
                                                  "\n",
                                                  "\n",
                                                  "--",
                                                  "b",
                                                  "--b",
                                                  "--b--",
                                                  "--c\n",
                                                  "--c--\n",
                                                  "Content-Type: ",
                                                  "multipart/",
                                                  "mixed",
                                                  "alternative",
                                                  "related",
                                                  "digest",
                                                  "; boundary=b\n",
                                                  "; boundary=\"c\"\n",
                                                  "text/",
                                                  "plain\n",
                                                  "html\n",
                                                  "message/rfc822\n",
                                                  "image/png",
                                                  "; name=",
                                                  "\"a.txt\"",
                                                  "name*0*=utf-8''%41",
                                                  "=?utf-8?Q?a?=",
                                                  "Content-Transfer-Encoding: ",
                                                  "base64\n",
                                                  "quoted-printable\n",
                                                  "x-uuencode\n",
                                                  "Content-Disposition: attachment; filename=",
                                                  "begin 644 u.bin\n",
                                                  "#:&DA\n",
                                                  "`\nend\n",
                                                  "QUJD",
                                                  "=41=\n",
                                                  "(",
                                                  ")",
                                                  " ",
                                                  "x"};

void Feed(MessageSplitter& splitter, std::string_view message, std::size_t pieceSize) {
  while (!message.empty()) {
    const auto end = message.find('\n');
    auto line = message.substr(0, end);
    message.remove_prefix(end == std::string_view::npos ? message.size() : end + 1);
    for (; line.size() > pieceSize; line.remove_prefix(pieceSize)) {
      splitter.Line(line.substr(0, pieceSize), false);
    }
    splitter.Line(line, true);
  }
}

void Split(std::string_view message, std::uint8_t options) {
  SplitSettings settings;
  settings.directory = "/dir";
  settings.suppressAttachments = (options & 1) != 0;
  settings.suppressAlternatives = (options & 2) != 0;
  settings.maximumBodyBytes = (options & 4) != 0 ? 10 : 1000;
  const std::size_t pieceSize = (options & 8) != 0 ? 40 : 1U << 20U;

  MemoryFiles files;
  {
    MessageSplitter splitter(files, quillon::fuzz::Reader(), settings);
    Feed(splitter, message, pieceSize);
  }
  Require(files.files.empty());

  MessageSplitter splitter(files, quillon::fuzz::Reader(), settings);
  Feed(splitter, message, pieceSize);
  SplitMessage split;
  Require(splitter.Finish(split));
  Require(split.attachments.size() == files.files.size());
  Require(split.body.size() <= 3000);  // a thousand bytes, as text
  for (const auto& attachment : split.attachments) {
    Require(files.FileExists(attachment.file));
    Require(attachment.file.rfind('/') == settings.directory.size());
    Require(attachment.file.find('\\') == std::string::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view raw(reinterpret_cast<const char*>(data + 1), size - 1);
  Split(raw, data[0]);
  std::string words;
  for (const char c : raw.substr(0, 4096))
    words += kWords[static_cast<unsigned char>(c) % kWords.size()];
  Split(words, data[0]);
  return 0;
}
