// splitmail [--suppress-attachments] [--suppress-alternatives] DIRECTORY < MESSAGE
//
// Splits a message as LoadMessage does: its files go into the directory, its text to the standard
// output, and "path<TAB>name" for each file to the standard error.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "codec/MessageSplitter.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "tools/splitmail/LineFeeder.h"

namespace {

constexpr const char* kUsage =
    "usage: splitmail [--suppress-attachments] [--suppress-alternatives] DIRECTORY < MESSAGE\n";
constexpr std::size_t kBlock = std::size_t{256} << 10;

bool ParseOptions(const std::vector<std::string_view>& arguments,
                  quillon::SplitSettings& settings) {
  for (const auto argument : arguments) {
    if (argument == "--suppress-attachments") {
      settings.suppressAttachments = true;
    } else if (argument == "--suppress-alternatives") {
      settings.suppressAlternatives = true;
    } else if (argument.starts_with('-') || !settings.directory.empty()) {
      return false;
    } else {
      settings.directory = argument;
    }
  }
  return !settings.directory.empty();
}

// Bytes read, 0 at the end.
std::size_t ReadInput(char* room, std::size_t size) {
  for (;;) {
    const auto count = ::read(STDIN_FILENO, room, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) throw std::runtime_error("the message cannot be read");
  }
}

// False when a file could not be written.
bool SplitInput(quillon::MessageSplitter& splitter, quillon::SplitMessage& message) {
  splitmail::LineFeeder feeder(splitter);
  std::vector<char> buffer(kBlock);
  std::size_t used = 0;
  while (const auto count = ReadInput(buffer.data() + used, buffer.size() - used)) {
    std::string_view text(buffer.data(), used + count);
    if (!feeder.Take(text)) return false;
    used = text.size();
    std::memmove(buffer.data(), text.data(), used);
  }
  return feeder.End({buffer.data(), used}) && splitter.Finish(message);
}

int Run(const quillon::SplitSettings& settings) {
  const auto files = quillon::MakeFileSystem();
  const auto codePage = quillon::MakeAnsiCodePage();
  const auto sets = quillon::MakeCharacterSets();
  quillon::MessageSplitter splitter(*files, {*codePage, *sets}, settings);
  quillon::SplitMessage message;
  if (!SplitInput(splitter, message)) {
    std::fputs("splitmail: a file cannot be written\n", stderr);
    return 1;
  }
  for (const auto& attachment : message.attachments) {
    std::fprintf(stderr, "%s\t%s\n", attachment.file.c_str(), attachment.displayName.c_str());
  }
  const bool written =
      std::fwrite(message.body.data(), 1, message.body.size(), stdout) == message.body.size();
  return written && std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  quillon::SplitSettings settings;
  if (!ParseOptions({arguments + 1, arguments + count}, settings)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    return Run(settings);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "splitmail: %s\n", error.what());
    return 2;
  }
}
