// Bytes in every character set: whatever they are, there is a text, it is UTF-8, and it does not
// grow beyond what the largest character takes. The first line of the input is the name.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "FuzzText.h"
#include "MemoryFiles.h"
#include "codec/CharacterSetName.h"
#include "core/Utf8.h"

namespace {

using quillon::fuzz::Require;

constexpr std::array kNames = {"",          "us-ascii",   "utf-8",       "utf-7",     "utf-16",
                               "utf-16le",  "iso-8859-1", "iso-8859-2",  "tis-620",   "koi8-r",
                               "gb2312",    "gb18030",    "big5",        "shift_jis", "iso-2022-jp",
                               "euc-jp",    "euc-kr",     "iso-2022-kr", "cp1258",    "cp1255",
                               "iso-8859-8"};

void Read(std::string_view bytes, std::string_view name) {
  constexpr std::size_t kLongestCharacter = 3;  // of a byte
  const auto& reader = quillon::fuzz::Reader();
  for (const auto& text : {reader.Named(bytes, name), reader.Whole(bytes, name)}) {
    Require(quillon::IsUtf8(text));
    Require(text.size() <= kLongestCharacter * bytes.size());
  }
  if (quillon::IsUtf8(bytes)) Require(reader.Unnamed(bytes) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto line = input.find('\n');
  const auto name = input.substr(0, line);
  const auto bytes = line == std::string_view::npos ? input : input.substr(line + 1);
  Read(bytes, name);
  if (name.empty()) return 0;
  Read(bytes, kNames[static_cast<unsigned char>(name[0]) % kNames.size()]);
  return 0;
}
