// A "winmail.dat" of any bytes, also with attributes put together from the data: nothing crashes,
// no more comes out than its compressed text and its nesting allow, and the same comes twice. Rich
// text, compressed or as it stands, becomes UTF-8.
#include "codec/Tnef.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "FuzzText.h"
#include "MemoryFiles.h"
#include "codec/RtfCompressed.h"
#include "codec/RtfText.h"
#include "core/Utf8.h"

namespace {

using quillon::FileBlocks;
using quillon::FileBytes;
using quillon::OpenMode;
using quillon::fuzz::MemoryFiles;
using quillon::fuzz::Reader;
using quillon::fuzz::Require;

constexpr const char* kPath = "/winmail.dat";

class Text final : public quillon::ByteSink {
 public:
  void Append(std::string_view bytes) override { text += bytes; }
  std::string text;
};

void Put(MemoryFiles& files, std::string_view bytes) {
  files.files[kPath] = MemoryFiles::Bytes(bytes.begin(), bytes.end());
}

std::string Open(std::string_view bytes) {
  MemoryFiles files;
  Put(files, bytes);
  quillon::SplitSettings settings;
  settings.directory = "/dir";
  quillon::AttachmentList list(files);
  quillon::BodyCollector body(Reader(), settings, list);
  const auto file = files.Open(kPath, OpenMode::kRead);
  std::optional<std::string> html;
  const bool isWhole = quillon::Tnef(Reader(), settings, list, body, html).Open(*file);
  Require(!list.Failed());
  auto all = std::to_string(static_cast<int>(isWhole)) + body.Finish();
  Require(all.size() <= bytes.size() * 30 + 100);
  std::size_t written = 0;
  for (const auto& attachment : list.Keep()) {
    const auto& content = files.files.at(attachment.file);
    Require(attachment.file.rfind('/') == settings.directory.size());
    written += content.size();
    all += attachment.displayName;
    all.append(content.begin(), content.end());
  }
  Require(written <= bytes.size() * 30 + 100);
  return all;
}

void Decompress(std::string_view bytes) {
  MemoryFiles files;
  Put(files, bytes);
  const auto file = files.Open(kPath, OpenMode::kRead);
  FileBlocks blocks(*file);
  Text rtf;
  quillon::DecompressRtf(FileBytes(blocks), rtf);
  Require(rtf.text.size() <= bytes.size() * 9);
}

void ReadRichText(std::string_view rtf) {
  Text text;
  quillon::RtfText reader(Reader(), text);
  reader.Append(rtf);
  reader.Finish();
  Require(text.text.size() <= rtf.size() * 4);
}

std::string LowFirst(std::size_t number, unsigned size) {
  std::string bytes;
  for (; size > 0; --size, number >>= 8U) bytes += static_cast<char>(number & 0xFFU);
  return bytes;
}

// Attributes whose sizes and sums are right, so that what is in them is reached.
std::string Attributes(std::string_view data) {
  constexpr std::array<unsigned, 9> kIds{0x00069007, 0x00078008, 0x0002800C, 0x00069003, 0x00069002,
                                         0x00018010, 0x0006800F, 0x00069001, 0x00069005};
  std::string file = LowFirst(0x223E9F78, 4) + LowFirst(1, 2);
  while (data.size() >= 2) {
    const auto id = kIds[static_cast<unsigned char>(data[0]) % kIds.size()];
    const auto value = data.substr(2, static_cast<unsigned char>(data[1]));
    unsigned sum = 0;
    for (const char c : value) sum += static_cast<unsigned char>(c);
    file += "\1" + LowFirst(id, 4) + LowFirst(value.size(), 4);
    file.append(value).append(LowFirst(sum, 2));
    data.remove_prefix(value.size() + 2);
  }
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Require(Open(bytes) == Open(bytes));
  Open(Attributes(bytes));
  Decompress(bytes);
  ReadRichText(bytes);
  return 0;
}
