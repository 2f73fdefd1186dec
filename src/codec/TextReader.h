// Bytes of received mail become text. What cannot be read as it claims to be, or claims nothing, is
// read in the ANSI code page of the system, which has a character for every byte.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

class CharacterSets;
class CodePage;

class TextReader {
 public:
  TextReader(const CodePage& ansi, const CharacterSets& sets) : ansi_(&ansi), sets_(&sets) {}

  // In the set of that name; without one, and in US-ASCII, what is UTF-8 is read as that.
  std::string Named(std::string_view bytes, std::string_view name) const;

  // The same of a whole text: a byte-order mark at its start says more than a name.
  std::string Whole(std::string_view bytes, std::string_view name) const;

  // Whether the bytes of a whole text are that text as they stand.
  static bool IsWholeText(std::string_view bytes, std::string_view name);

  std::string Unnamed(std::string_view bytes) const;
  std::string Ansi(std::string_view bytes) const;

 private:
  const CodePage* ansi_;
  const CharacterSets* sets_;
};

}  // namespace quillon
