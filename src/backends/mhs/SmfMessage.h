// A message in the Standard Message Format of MHS: a first line "SMF-70" (or "SMF-71"), lines
// "Field: value", an empty line, the text. All of it is bytes of the message's code page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

struct SmfField {
  std::string name;
  std::string value;
  bool operator==(const SmfField&) const = default;
};

struct SmfAttachment {
  std::string parcel;  // as the sender has it: see IsParcelName
  std::string name;    // the file's original name; empty when it is not told
};

struct SmfMessage {
  std::vector<SmfField> fields;  // in their order, each in one line
  std::string body;
  std::size_t headSize = 0;  // of the bytes it was read from, those before the text
};

// The first field of that name, in any case; empty when there is none.
std::string SmfValue(const SmfMessage& message, std::string_view name);

// What its fields say of files; each stands by itself, and may lie.
std::vector<SmfAttachment> SmfAttachments(const SmfMessage& message);

// A value as it stands in one line: each run of CR, LF and NUL is a blank, white space around it
// goes.
std::string CleanSmfValue(std::string_view value);

}  // namespace quillon
