// Text in a character set that somebody has asked for by name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

class CharacterEncoder;
struct OutgoingSet;

class TextEncoder {
 public:
  // A name that is known, see below. With `replaces` a "?" takes the place of what a set lacks.
  TextEncoder(std::string_view name, bool replaces, const CharacterEncoder& system);

  // Whether there is a set of that name, in any case, with or without hyphens; "auto" is
  // "us-ascii" for what that holds, and "utf-8" for all else.
  static bool Knows(std::string_view name);

  // Whether the system has what the set needs.
  bool IsAvailable() const;

  // The name that the bytes of a text are labelled with.
  std::string_view Label(std::string_view text) const;

  // None when the set lacks a character. Text is UTF-8; what is not is taken as U+FFFD.
  std::optional<std::string> ToBytes(std::string_view text) const;

  // The first few characters that the set lacks, for somebody to read: "U+20AC (€), U+263A (☺)".
  std::string Lacking(std::string_view text) const;

 private:
  const OutgoingSet& SetFor(std::string_view text) const;

  const OutgoingSet* set_;
  const CharacterEncoder* system_;
  bool replaces_;
};

}  // namespace quillon
