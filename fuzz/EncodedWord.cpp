// Header fields with encoded words: what comes out is one line of UTF-8 when one went in, fields
// without words are nothing but read, and a name is part of its recipient whatever it says.
#include "codec/EncodedWord.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzText.h"
#include "MemoryFiles.h"
#include "core/RecipientText.h"
#include "core/Utf8.h"

namespace {

using quillon::fuzz::Require;

void Decode(std::string_view field) {
  const auto& reader = quillon::fuzz::Reader();
  const bool oneLine = field.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
  for (const auto& text :
       {quillon::DecodeEncodedWords(field, reader), quillon::DecodeAddresses(field, reader)}) {
    Require(quillon::IsUtf8(text));
    Require(text.size() <= 3 * field.size());
    if (oneLine) Require(text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos);
    if (field.find("=?") == std::string_view::npos) Require(text == reader.Unnamed(field));
  }
}

std::string Hexadecimal(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    text += {'=', kDigits[byte / 16], kDigits[byte % 16]};
  }
  return text;
}

// In two words, wherever they are cut.
void Name(std::string_view name, std::size_t cut) {
  const auto word = [](std::string_view part) { return "=?utf-8?q?" + Hexadecimal(part) + "?="; };
  const auto words = word(name.substr(0, cut)) + " " + word(name.substr(cut));
  const auto& reader = quillon::fuzz::Reader();
  for (const auto& field : {words + " <a@x>, b@y", "\"" + words + "\" <a@x>,b@y",
                            "Ann" + words + "<a@x>, b@y", "b@y, Ann " + words + " B <a@x>"}) {
    const auto text = quillon::DecodeAddresses(field, reader);
    const auto recipients = quillon::SplitRecipients(text, ",", "<>");
    Require(recipients.size() == 2);
    const auto& named = recipients[0] == "b@y" ? recipients[1] : recipients[0];
    const auto bracket = quillon::LastBracket(named);
    Require(bracket != std::string_view::npos && named.substr(bracket) == "<a@x>");
  }
  const bool whole = name.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
  if (whole) Require(quillon::DecodeEncodedWords(words, reader) == reader.Named(name, "utf-8"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data + 1), size - 1);
  Decode(input);
  Name(input.substr(0, 1000), data[0] % (input.substr(0, 1000).size() + 1));
  return 0;
}
