// The plain text of rich text, without pictures, styles and fields' instructions. HTML that is
// wrapped into rich text reads as the text that it shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "codec/ByteSink.h"
#include "codec/TextReader.h"

namespace quillon {

class RtfText final : public ByteSink {
 public:
  // Groups within one another; what is deeper is left out.
  static constexpr std::size_t kMaximumDepth = 1000;

  // The text goes to the sink in UTF-8.
  RtfText(const TextReader& reader, ByteSink& sink) : reader_(reader), sink_(sink) {}

  void Append(std::string_view bytes) override;
  void Finish() { Flush(); }

 private:
  enum class State { Text, Escape, Word, Number, Hexadecimal, Binary };
  enum class Destination { Text, Fonts, None };
  struct Group {
    Destination destination = Destination::Text;
    int replacements = 1;  // how many characters stand behind one of Unicode, for old readers
    int font = -1;
  };

  void Take(char c);
  void TakeText(char c);
  void TakeEscape(char c);
  void TakeWord(char c);
  void TakeHexadecimal(char c);
  void BeginGroup();
  void EndGroup();
  void Word();
  bool FontWord();
  void Unicode();
  bool Replaces();
  void PutByte(char c);
  void PutText(std::string_view text);
  int CodePage() const;
  void Flush();

  const TextReader reader_;
  ByteSink& sink_;
  State state_ = State::Text;
  Group group_;
  std::vector<Group> outer_;
  std::size_t tooDeep_ = 0;  // groups beyond the limit
  std::string word_;
  bool negative_ = false;
  bool hasNumber_ = false;
  std::int32_t number_ = 0;
  std::string digits_;
  int toReplace_ = 0;  // characters that are left out
  int codePage_ = 1252;
  int defaultFont_ = -1;
  std::map<int, int> fonts_;  // their code pages
  std::string bytes_;         // of the code page bytesPage_
  int bytesPage_ = 0;
  std::u16string units_;
};

}  // namespace quillon
