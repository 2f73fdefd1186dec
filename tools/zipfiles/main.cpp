// zipfiles [--password PASSWORD] ARCHIVE FILE...
//
// Packs the files as attachments are packed.
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "codec/ZipClass.h"
#include "platform/Platform.h"
#include "ports/FileSystem.h"

namespace {

int Run(std::vector<std::string_view> words) {
  const auto files = quillon::MakeFileSystem();
  quillon::ZipClass archive(*files);
  if (words.size() >= 2 && words[0] == "--password") {
    archive.Password(std::string(words[1]));
    words.erase(words.begin(), words.begin() + 2);
  }
  if (words.size() < 2 || words[0].starts_with('-')) {
    std::fputs("usage: zipfiles [--password PASSWORD] ARCHIVE FILE...\n", stderr);
    return 2;
  }
  archive.zipFile(std::string(words[0]));
  for (size_t i = 1; i < words.size(); ++i) archive.AddFile(std::string(words[i]));
  if (archive.zip() == quillon::kTrue) return 0;
  std::fputs("zipfiles: the files cannot be packed\n", stderr);
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return Run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zipfiles: %s\n", error.what());
    return 1;
  }
}
