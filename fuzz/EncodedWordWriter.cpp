// What is written as encoded words, and as parameters, is read back as it was. The first byte of
// the input says what stands before it on its line.
#include "codec/EncodedWordWriter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "codec/ContentField.h"
#include "codec/EncodedWord.h"
#include "codec/FieldFold.h"
#include "codec/Parameter2231.h"
#include "codec/TextReader.h"
#include "core/Text.h"
#include "core/Utf8.h"
#include "platform/Platform.h"
#include "ports/CharacterSets.h"
#include "ports/CodePage.h"

namespace {

using quillon::fuzz::Require;

std::string Unfolded(std::string text) {
  for (auto at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) {
    text.erase(at, 2);
  }
  return text;
}

void CheckFold(const std::string& value) {
  const auto field = "Subject: " + value;
  const auto lines = quillon::FoldField(field);
  Require(lines.ends_with("\r\n") && Unfolded(lines) == field);
  for (const auto& line : quillon::Split(lines.substr(0, lines.size() - 2), "\r\n")) {
    Require(value.empty() || line.find_first_not_of(" \t") != std::string::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto codePage = quillon::MakeAnsiCodePage();
  static const auto sets = quillon::MakeCharacterSets();
  const quillon::TextReader reader(*codePage, *sets);
  if (size == 0 || size > 20000) return 0;
  // Any bytes as text: those of ISO-8859-1 and of UTF-8.
  std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::erase_if(text, [](char c) { return c >= 0 && c < ' '; });
  if (!quillon::IsUtf8(text)) {
    std::u16string units;
    for (const char c : text) units += static_cast<char16_t>(static_cast<unsigned char>(c));
    text = quillon::Utf8FromUtf16(units);
  }
  const auto same = [](std::string_view part) { return std::string(part); };
  const auto words = quillon::EncodeWords(text, "utf-8", same, data[0]);
  for (const auto& word : quillon::Split(words, " ")) Require(word.size() <= 75);
  Require(quillon::DecodeEncodedWords(words, reader) == text);
  CheckFold(words);
  CheckFold(text);
  if (text.empty()) return 0;
  for (const auto& parameter : {quillon::ExtendedParameter("name", text, "utf-8"),
                                quillon::OldParameter("name", text, "utf-8", same)}) {
    const auto field = quillon::ParseContentField("a/b" + parameter, reader);
    Require(field.Parameter("NAME") == text);
  }
  return 0;
}
